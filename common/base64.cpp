#include "common/base64.h"

#include <glib.h>

#include <cstdlib>
#include <cstring>

char* ptDecodeBase64(const char* b64str)
{
    if (b64str == nullptr) {
        return nullptr;
    }

    // Decoded into our own memory: GLib's allocating decoder ends the process when memory runs out.
    const std::size_t length = strlen(b64str);
    auto* decoded = static_cast<char*>(malloc(length / 4 * 3 + 4));
    if (decoded == nullptr) {
        return nullptr;
    }

    gint state = 0;
    guint save = 0;
    decoded[g_base64_decode_step(
        b64str, length, reinterpret_cast<guchar*>(decoded), &state, &save
    )] = '\0';
    return decoded;
}
