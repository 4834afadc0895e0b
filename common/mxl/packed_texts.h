/**
 * Texts that share phrases, packed by the compiler: a phrase is written as the one byte 0x80 plus
 * its number, everything else as it is. The request templates are two thirds phrases, so that a
 * device holds 2.3 KB of them in place of 6.3; they are unpacked once, when the plug-in is loaded.
 */
#pragma once

#include <array>
#include <cstddef>
#include <iterator>

constexpr unsigned char FIRST_PHRASE = 0x80;

/** The phrases of the request templates, each with its NUL; one that contains another stands in
 * front of it. A text that ceases to use one is packed larger, never wrong. */
constexpr char PHRASES[] =
    "<xs:mxl xmlns:xs=\"http://mxl.example.com/protocol/transaction/MXLSchema-0.9\" "
    "xmlns=\"urn:varden:nas:boxwelld\" src=\"dpv\0"
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\0"
    "<xs:transaction id=\"trid\">\0"
    "</xs:transaction>\0"
    "><![CDATA[%s]]></\0"
    "User:Remote:App\">\0"
    "resource-type=\"\0"
    "User_Collection\0"
    "<xs:set id=\"njl\0"
    "_1347435858000\0"
    "resource-id=\"\0"
    "Email_Address\0"
    "\" dst=\"nas\">\0"
    " id=\"opid\" \0"
    "P2PUserName\0"
    "CloudOwner\"\0"
    "User_Name>\0"
    "Group_Name\0"
    "criterion>\0"
    "</xs:mxl>\0"
    "IsLocked>\0"
    "User_Id>\0"
    "SmbHash\0"
    "SysHash\0"
    "\t\t</xs:\0"
    "=\"%s\"\0"
    "\t\t\t<\0"
    ">\t\t<\0"
    "<xs:\0"
    "\t</";

/** Length of a NUL-terminated text, at compile time too. */
constexpr std::size_t lengthOf(const char* text)
{
    return __builtin_strlen(text);
}

/**
 * Packs what stands in front of `end`: hands the code of a phrase, or the character, to `put`.
 *
 * @param put  called with one packed byte at a time
 */
template<typename Put> constexpr void packInto(const char* text, const char* end, Put put)
{
    while (text != end) {
        unsigned char code = FIRST_PHRASE;
        const char* phrase = PHRASES;
        while (phrase < std::end(PHRASES) &&
               (static_cast<std::size_t>(end - text) < lengthOf(phrase) ||
                __builtin_memcmp(text, phrase, lengthOf(phrase)) != 0)) {
            phrase += lengthOf(phrase) + 1;
            ++code;
        }
        const bool found = phrase < std::end(PHRASES);
        put(found ? static_cast<char>(code) : *text);
        text += found ? lengthOf(phrase) : 1;
    }
}

/** Bytes that texts take when they are packed; the literal's own NUL is the last text's. */
template<std::size_t Size> consteval std::size_t packedSize(const char (&texts)[Size])
{
    std::size_t size = 0;
    packInto(texts, texts + Size, [&](char) { ++size; });
    return size;
}

/** The texts, packed. */
template<std::size_t PackedSize, std::size_t Size>
consteval std::array<char, PackedSize> packedTexts(const char (&texts)[Size])
{
    std::array<char, PackedSize> packed = {};
    std::size_t at = 0;
    packInto(texts, texts + Size, [&](char byte) { packed[at++] = byte; });
    return packed;
}

/**
 * Unpacks texts.
 *
 * @param texts        receives them; as large as the literal that was packed
 * @param packed       what packedTexts() made of it
 * @param packed_size  its size in bytes
 */
void unpackTexts(char* texts, const char* packed, std::size_t packed_size);
