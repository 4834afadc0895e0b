#include "common/mxl/packed_texts.h"

#include <cstring>

void unpackTexts(char* texts, const char* packed, std::size_t packed_size)
{
    for (const char* end = packed + packed_size; packed != end; ++packed) {
        const auto code = static_cast<unsigned char>(*packed);
        if (code < FIRST_PHRASE) {
            *texts++ = *packed;
            continue;
        }
        const char* phrase = PHRASES;
        for (int n = code - FIRST_PHRASE; n > 0; --n) {
            phrase += lengthOf(phrase) + 1;
        }
        texts = stpcpy(texts, phrase);
    }
}
