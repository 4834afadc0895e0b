#include "syscmd/user_records.h"

#include <cstring>

namespace {

/** First occurrence of the marker at or behind `from`, else null; `from` never goes back. */
const char* find(MarkerPosition* position, const char* from)
{
    if (!position->searched || (position->at != nullptr && position->at < from)) {
        position->at = strstr(from, position->marker.data());
        position->searched = true;
    }
    return position->at;
}

std::string_view read(FieldPosition* field, const char* record)
{
    const char* begin = find(&field->begin, record);
    if (begin == nullptr) {
        return "";
    }
    const char* value = begin + field->begin.marker.size();
    const char* end = find(&field->end, value);
    return end != nullptr ? std::string_view(value, static_cast<std::size_t>(end - value)) : value;
}

} // namespace

bool nextRecord(UserRecords* records, UserRecord* record)
{
    // A record begins behind the first byte of the reply, or of the record before it.
    const char* start =
        *records->cursor != '\0' ? find(&records->start, records->cursor + 1) : nullptr;
    if (start == nullptr) {
        return false;
    }

    records->cursor = start;
    record->id = read(&records->id, start);
    record->group = read(&records->group, start);
    record->name = read(&records->name, start);
    record->email = read(&records->email, start);
    return true;
}
