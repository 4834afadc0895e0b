/**
 * The envelope of every transaction (MXL), and the query that both the access check and the account
 * operations send. Texts are literals, so that the compiler checks their conversions.
 */
#pragma once

/** Where the transaction schema lives. Every request names it; nothing is fetched from there. */
#define MXL_SCHEMA "http://mxl.example.com/protocol/transaction/MXLSchema-0.9"

/**
 * One request: XML declaration, `separator` (white space that differs between templates), the
 * root's start tag with the source tag `src`, and `body`, which ends with the root's end tag.
 */
#define MXL_REQUEST(separator, src, body)                                                          \
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" separator "<xs:mxl xmlns:xs=\"" MXL_SCHEMA        \
    "\" xmlns=\"urn:varden:nas:boxwelld\" src=\"" src "\" dst=\"nas\">" body

/** Query of the user collection by exact name; `value` is the name's conversion. */
#define MXL_QUERY_BY_NAME(value)                                                                   \
    MXL_REQUEST(                                                                                   \
        "", "dpv_1358953089706",                                                                   \
        "  <xs:transaction id=\"trid\">"                                                           \
        "\t<xs:query id=\"opid\" resource-id=\"\" resource-type=\"User_Collection\">"              \
        "\t  <xs:qualifier>"                                                                       \
        "\t\t<xs:page direction=\"1\" start-index=\"20\" sort=\"/User/User_Name/\"/>"              \
        "\t  </xs:qualifier>"                                                                      \
        "\t  <xs:criterion>"                                                                       \
        "\t\t<xs:equal property=\"/User/User_Name/\">"                                             \
        "\t\t  <xs:value><![CDATA[" value "]]></xs:value>"                                         \
        "\t\t</xs:equal>"                                                                          \
        "\t  </xs:criterion>"                                                                      \
        "\t</xs:query>"                                                                            \
        "  </xs:transaction></xs:mxl>"                                                             \
    )

/** The lock query of the access check; its conversion receives the login. */
#define LOCK_QUERY_TEXT MXL_QUERY_BY_NAME("%s")
