/** The user records of a query's reply, read in one forward pass. */
#pragma once

#include <string_view>

/** What is read of one record; views into the reply. */
struct UserRecord {
    std::string_view id;
    std::string_view group;
    std::string_view name;
    std::string_view email;
};

/** Where one marker was last found, so that a search that only moves forward never reads a byte of
 * the reply twice. */
struct MarkerPosition {
    std::string_view marker;
    const char* at = nullptr; // null behind the last one
    bool searched = false;
};

/** Where one field was last found. */
struct FieldPosition {
    MarkerPosition begin;
    MarkerPosition end;
};

/** A walk over the records of a reply, which must outlive it. */
struct UserRecords {
    const char* cursor;        // the reply, then the last record
    const char* end = nullptr; // the reply's, once it is known
    MarkerPosition start = {"<User id="};
    FieldPosition id = {{"<User_Id>"}, {"</User_Id>"}};
    FieldPosition group = {{"<Group_Name><![CDATA["}, {"]]></Group_Name>"}};
    FieldPosition name = {{"<User_Name><![CDATA["}, {"]]></User_Name>"}};
    FieldPosition email = {{"<Email_Address><![CDATA["}, {"]]></Email_Address>"}};
};

/**
 * Moves to the next record and reads it. A field's value is the text between its markers, searched
 * from the record's start to the end of the reply: one that is missing is taken from a later
 * record, or empty.
 *
 * @return false when there is no further record
 */
bool nextRecord(UserRecords* records, UserRecord* record);
