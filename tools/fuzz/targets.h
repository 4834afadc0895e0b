/** What the fuzzer runs, and the literal references that it compares with. */
#pragma once

#include "tools/between.h"

#include <string>
#include <vector>

/** What a target makes of one input; a finding ends the process. */
using Target = void (*)(const std::string& input);

struct Registered {
    Registered(const char* name, Target target);
};

/** A target, known by its name: FUZZ(name) { … `input` … } */
#define FUZZ(name)                                                                                 \
    static void name(const std::string& input);                                                    \
    static const Registered registered_##name(#name, name);                                        \
    static void name(const std::string& input)

/** Ends the process, telling both, where they differ. */
void expectSame(const std::string& actual, const std::string& expected, const char* what);

/** A text as a C string's reader sees it: up to its first NUL. */
inline std::string read(const std::string& text)
{
    return text.c_str();
}

/** The input's first lines but one, in front of the rest: `count` fields, read as C strings. */
std::vector<std::string> fieldsOf(const std::string& input, std::size_t count);

inline std::string cdata(const std::string& text, const std::string& element)
{
    return between(text, '<' + element + "><![CDATA[", "]]></" + element + '>');
}

/** Base64, as GLib decodes it, and that read as a C string. */
std::string decodedBytes(const std::string& base64);
std::string decoded(const std::string& base64);
/** What it decodes to in front of the first colon, and behind it; nothing without. */
std::vector<std::string> pairOf(const std::string& base64);

/** A newly allocated text, released; null is no other text. */
std::string owned(char* text);
std::string joined(const std::vector<std::string>& lines);
