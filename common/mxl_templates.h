/**
 * The request templates: printf formats whose `%s` are named in order. Nothing is escaped; what may
 * hold markup stands in CDATA sections.
 *
 * A row is the whole of a template: NAME is exported for other plug-ins, a pointer to its text;
 * NAME_TEXT, in C++17 and later, is the text itself, against which the compiler checks the
 * arguments of String(). For C and C++.
 */
#pragma once

#include "liblst/export.h"

#if defined(MXL_TEMPLATE)
// The rows are definitions, too.
#elif !defined(__cplusplus) || __cplusplus < 201703L
#define MXL_TEMPLATE(name, text) EXPORTED extern const char* const name
#else
#define MXL_TEMPLATE(name, text)                                                                   \
    EXPORTED extern const char* const name;                                                        \
    inline constexpr char name##_TEXT[] = text
#endif

/** Where the transaction schema lives. Every request names it; nothing is fetched from there. */
#define MXL_SCHEMA "http://mxl.example.com/protocol/transaction/MXLSchema-0.9"

/**
 * One request: XML declaration, `separator` (white space that differs between templates), the
 * root's start tag with the source tag `src`, and `body`, which ends with the root's end tag.
 */
#define MXL_REQUEST(separator, src, body)                                                          \
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" separator "<xs:mxl xmlns:xs=\"" MXL_SCHEMA        \
    "\" xmlns=\"urn:varden:nas:boxwelld\" src=\"" src "\" dst=\"nas\">" body

// ---- update of a user --------------------------------------------------------------------------

/** The four updates, which an authorisation line precedes; `fields` are the user's elements behind
 * id and name. Conversions: owner, user id three times, user name, then those of `fields`. */
#define MXL_UPDATE(fields)                                                                         \
    "Authorization: %s\r\n" MXL_REQUEST(                                                           \
        "", "dpv_1347435858000",                                                                   \
        "<xs:transaction id=\"trid\">"                                                             \
        "<xs:set id=\"opid\" resource-id=\"Users\" resource-type=\"User_Collection\">"             \
        "\t<User_Collection>"                                                                      \
        "\t\t<User id=\"%s\" resource-id=\"%s\" resource-type=\"User\">"                           \
        "\t\t\t<User_Id>%s</User_Id>"                                                              \
        "\t\t\t<User_Name>%s</User_Name>" fields "\t\t</User>"                                     \
        "\t</User_Collection></xs:set></xs:transaction></xs:mxl>"                                  \
    )

#define MXL_HASHES                                                                                 \
    "\t\t\t<SmbHash><![CDATA[%s]]></SmbHash>"                                                      \
    "\t\t\t<SysHash><![CDATA[%s]]></SysHash>"
#define MXL_GROUP "\t\t\t<Group_Name><![CDATA[%s]]></Group_Name>"
#define MXL_EMAIL "\t\t\t<Email_Address><![CDATA[%s]]></Email_Address>"
#define MXL_P2P_USERNAME "\t\t\t<P2PUserName><![CDATA[%s]]></P2PUserName>"

/** Sets hashes, group, e-mail and cloud user, and unlocks. Owner, user id (3), user name, SMB hash,
 * system hash, group, e-mail, cloud user. */
MXL_TEMPLATE(
    UPDATE_ACCOUNT_MXL,
    MXL_UPDATE(MXL_HASHES MXL_GROUP MXL_EMAIL MXL_P2P_USERNAME "\t\t\t<IsLocked>0</IsLocked> ")
);

/** The same without unlocking. */
MXL_TEMPLATE(
    RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME,
    MXL_UPDATE(MXL_HASHES MXL_GROUP MXL_EMAIL MXL_P2P_USERNAME)
);

/** Keeps the password. Owner, user id (3), user name, group, e-mail, cloud user. */
MXL_TEMPLATE(
    RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD,
    MXL_UPDATE(MXL_GROUP MXL_EMAIL MXL_P2P_USERNAME)
);

/** Keeps password, group and cloud user. Owner, user id (3), user name, e-mail. */
MXL_TEMPLATE(RENAME_ACCOUNT_NO_PASSWORD_MXL, MXL_UPDATE(MXL_EMAIL));

// ---- queries -----------------------------------------------------------------------------------

/** Query by exact name: three conversions that together make the name. */
MXL_TEMPLATE(
    GET_USER_DATA_MXL,
    MXL_REQUEST(
        "",
        "dpv_1358953089706",
        "  <xs:transaction id=\"trid\">"
        "\t<xs:query id=\"opid\" resource-id=\"\" resource-type=\"User_Collection\">"
        "\t  <xs:qualifier>"
        "\t\t<xs:page direction=\"1\" start-index=\"20\" sort=\"/User/User_Name/\"/>"
        "\t  </xs:qualifier>"
        "\t  <xs:criterion>"
        "\t\t<xs:equal property=\"/User/User_Name/\">"
        "\t\t  <xs:value><![CDATA[%s%s%s]]></xs:value>"
        "\t\t</xs:equal>"
        "\t  </xs:criterion>"
        "\t</xs:query>"
        "  </xs:transaction></xs:mxl>"
    )
);

/** Query by e-mail address; no operation of this plug-in sends it. E-mail address. */
MXL_TEMPLATE(
    QUERY_USER_BY_ID_MXL,
    MXL_REQUEST(
        " \t\t\t",
        "dpv_1358953089706",
        " \t\t\t<xs:transaction id=\"trid\">"
        " \t\t\t\t<xs:query id=\"opid\" resource-id=\"\" resource-type=\"User_Collection\">"
        " \t\t\t\t<xs:qualifier>"
        " \t\t\t\t\t<xs:page direction=\"1\" start-index=\"20\"/>"
        " \t\t\t\t</xs:qualifier>"
        " \t\t\t\t<xs:criterion>"
        " \t\t\t\t\t<xs:like property=\"/User/Email_Address/\" value=\"%s\"/>"
        " \t\t\t\t</xs:criterion>"
        " \t\t\t\t</xs:query>"
        " \t\t\t</xs:transaction>"
        " \t\t\t</xs:mxl>"
    )
);

// ---- accounts ----------------------------------------------------------------------------------

/** Creates a locked account. Resource type, user name, SMB hash, system hash, group, e-mail. */
MXL_TEMPLATE(
    ADD_USER_MXL,
    MXL_REQUEST(
        "",
        "dpv_1347435858000",
        "<xs:transaction id=\"trid\">"
        "<xs:add id=\"opid\" resource-type=\"User\" c-resource-id=\"Users\" "
        "c-resource-type=\"User_Collection\">"
        "\t<User_Collection>"
        "\t\t<User id=\"0\" resource-type=\"%s\">"
        "\t\t\t<User_Id><![CDATA[]]></User_Id>"
        "\t\t\t<User_Name><![CDATA[%s]]></User_Name>" MXL_HASHES MXL_GROUP MXL_EMAIL
        "\t\t\t<IsLocked>1</IsLocked> "
        "\t\t</User>"
        "\t</User_Collection></xs:add></xs:transaction></xs:mxl>"
    )
);

/** Deletes an account and keeps its home folder. User id. */
MXL_TEMPLATE(
    DELETE_USER_MXL,
    MXL_REQUEST(
        "",
        "dpv_1358943478000",
        "  <xs:transaction id=\"trid\">"
        "    <xs:delete id=\"opid\" resource-id=\"%s\" resource-type=\"User\" "
        "c-resource-id=\"Users\" c-resource-type=\"User_Collection\">"
        "\t<keep_home_folder>1</keep_home_folder>"
        "\t</xs:delete>"
        "  </xs:transaction></xs:mxl>"
    )
);

// ---- remote-access users -----------------------------------------------------------------------

/** Adds a remote-access user; `channel` stands between full name and user name. */
#define MXL_ADD_NET(channel)                                                                       \
    MXL_REQUEST(                                                                                   \
        "", "dpv1360722324518",                                                                    \
        " <xs:transaction id=\"trid\">"                                                            \
        "   <xs:add id=\"opid\" resource-type=\"User:Remote:App\">"                                \
        "\t   <User FullName=\"%s\" " channel "UserName=\"%s\"/>"                                  \
        "   </xs:add>"                                                                             \
        " </xs:transaction></xs:mxl>"                                                              \
    )

/** Adds a remote-access user. Full name, user name. */
MXL_TEMPLATE(MXL_TMPL_ADD_NET, MXL_ADD_NET(""));

/** The same with an invitation by e-mail; no operation of this plug-in sends it. Full name, user
 * name. */
MXL_TEMPLATE(MXL_TMPL_ADD_NET_INVITE, MXL_ADD_NET("Channel=\"4\" "));

/** Deletes a remote-access user. User name. */
MXL_TEMPLATE(
    MXL_TMPL_DEL_NET,
    MXL_REQUEST(
        " ",
        "dpv1360722324518",
        "  <xs:transaction id=\"trid\">"
        "    <xs:delete id=\"opid\" resource-type=\"User:Remote:App\">"
        " \t   <User FullName=\"\" UserName=\"%s\"/>"
        "    </xs:delete>"
        "  </xs:transaction>"
        " </xs:mxl>"
    )
);

// ---- the device --------------------------------------------------------------------------------

/** Clears the device's cloud owner. No conversions. */
MXL_TEMPLATE(
    UNREGISTER_USER_MXL,
    MXL_REQUEST(
        "\t\t",
        "dpv_1375606536000",
        "\t\t<xs:transaction id=\"njl_id_7330\">"
        "\t\t<xs:set id=\"njl_id_7329\" resource-id=\"CloudOwner\" resource-type=\"CloudOwner\">"
        "\t\t<User id=\"0\" resource-id=\"0\" resource-type=\"User\" is-domain-member=\"0\">"
        "\t\t<User_Name></User_Name>"
        "\t\t<Password></Password>"
        "\t\t<Confirm>false</Confirm>"
        "\t\t<Keep_Home_Folder>1</Keep_Home_Folder>"
        "\t\t</User>"
        "\t\t</xs:set>"
        "\t\t</xs:transaction>"
        "\t\t</xs:mxl>"
    )
);

#undef MXL_ADD_NET
#undef MXL_P2P_USERNAME
#undef MXL_EMAIL
#undef MXL_GROUP
#undef MXL_HASHES
#undef MXL_UPDATE
#undef MXL_REQUEST
#undef MXL_SCHEMA
#undef MXL_TEMPLATE
