#include "common/random_name.h"

#include "common/result.h"

#include <cstdlib>
#include <ctime>

int generateHashString(char** result, int length)
{
    constexpr char DIGITS[] = "0123456789abcdef";

    if (result == nullptr || length < 0) {
        return -1;
    }

    srand(static_cast<unsigned>(time(nullptr)));
    auto* digits = static_cast<char*>(malloc(static_cast<std::size_t>(length) + 1));
    if (digits == nullptr) {
        return -1;
    }

    for (int i = 0; i < length; ++i) {
        digits[i] = DIGITS[rand() % 16];
    }
    digits[length] = '\0';
    *result = digits;
    return SUCCESS;
}
