/** Base64, standard alphabet, padded. */
#pragma once

#include <glib.h>

#include <memory>
#include <string>

inline std::string base64(const std::string& bytes)
{
    const std::unique_ptr<char, decltype(&g_free)> text(
        g_base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()), g_free
    );
    return text.get();
}
