#include "syscmd/daemon/user_records.h"

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

std::string_view read(FieldPosition* field, const char* record, const char* reply_end)
{
    const char* begin = find(&field->begin, record);
    if (begin == nullptr) {
        return "";
    }
    const char* value = begin + field->begin.marker.size();
    const char* mark = find(&field->end, value);
    const char* end = mark != nullptr ? mark : reply_end;
    return {value, static_cast<std::size_t>(end - value)};
}

} // namespace

bool nextRecord(UserRecords* records, UserRecord* record)
{
    if (records->end == nullptr) {
        records->end = records->cursor + strlen(records->cursor);
    }
    // A record begins behind the first byte of the reply, or of the record before it.
    const char* start =
        records->cursor != records->end ? find(&records->start, records->cursor + 1) : nullptr;
    if (start == nullptr) {
        return false;
    }

    records->cursor = start;
    record->id = read(&records->id, start, records->end);
    record->group = read(&records->group, start, records->end);
    record->name = read(&records->name, start, records->end);
    record->email = read(&records->email, start, records->end);
    return true;
}
