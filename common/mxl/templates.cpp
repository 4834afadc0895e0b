#include "common/mxl/packed_texts.h"
#include "common/mxl/texts.h"
#include "common/mxl_templates.h"

#include <algorithm>
#include <cstddef>

namespace {

/** All templates, each with its NUL, in the order of the pointers below. */
constexpr char TEXTS[] = UPDATE_ACCOUNT_MXL_TEXT "\0"          //
    RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_TEXT "\0"             //
    RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD_TEXT "\0" //
    RENAME_ACCOUNT_NO_PASSWORD_MXL_TEXT "\0"                   //
    GET_USER_DATA_MXL_TEXT "\0"                                //
    ADD_USER_MXL_TEXT "\0"                                     //
    MXL_TMPL_DEL_NET_TEXT "\0"                                 //
    MXL_TMPL_ADD_NET_TEXT "\0"                                 //
    MXL_TMPL_ADD_NET_INVITE_TEXT "\0"                          //
    QUERY_USER_BY_ID_MXL_TEXT "\0"                             //
    DELETE_USER_MXL_TEXT "\0"                                  //
    UNREGISTER_USER_MXL_TEXT;

constexpr auto PACKED = packedTexts<packedSize(TEXTS)>(TEXTS);

char unpacked[sizeof TEXTS];

[[gnu::constructor]] void unpackTemplates()
{
    unpackTexts(unpacked, PACKED.data(), PACKED.size());
}

/** Where the n-th text begins. */
consteval std::size_t offset(int n)
{
    const char* text = TEXTS;
    for (; n > 0; --n) {
        text = std::find(text, std::end(TEXTS), '\0') + 1;
    }
    return static_cast<std::size_t>(text - TEXTS);
}

} // namespace

const char* const UPDATE_ACCOUNT_MXL = unpacked;
const char* const RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME = unpacked + offset(1);
const char* const RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD = unpacked + offset(2);
const char* const RENAME_ACCOUNT_NO_PASSWORD_MXL = unpacked + offset(3);
const char* const GET_USER_DATA_MXL = unpacked + offset(4);
const char* const ADD_USER_MXL = unpacked + offset(5);
const char* const MXL_TMPL_DEL_NET = unpacked + offset(6);
const char* const MXL_TMPL_ADD_NET = unpacked + offset(7);
const char* const MXL_TMPL_ADD_NET_INVITE = unpacked + offset(8);
const char* const QUERY_USER_BY_ID_MXL = unpacked + offset(9);
const char* const DELETE_USER_MXL = unpacked + offset(10);
const char* const UNREGISTER_USER_MXL = unpacked + offset(11);
