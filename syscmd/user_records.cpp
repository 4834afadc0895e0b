#include "syscmd/user_records.h"

#include "common/cut.h"

#include <algorithm>

namespace {

/** First occurrence of the marker at or behind `from`, else npos; `from` never goes back. */
std::size_t find(MarkerPosition* position, std::string_view text, std::size_t from)
{
    if (!position->searched || position->at < from) {
        position->at = findMarker(text, position->marker, from);
        position->searched = true;
    }
    return position->at;
}

std::string_view read(FieldPosition* field, std::string_view reply, std::size_t record)
{
    const std::size_t begin = find(&field->begin, reply, record);
    if (begin == std::string_view::npos) {
        return "";
    }
    const std::size_t value = begin + field->begin.marker.size();
    const std::size_t end = find(&field->end, reply, value);
    return {reply.data() + value, std::min(end, reply.size()) - value};
}

} // namespace

bool nextRecord(UserRecords* records, UserRecord* record)
{
    // A record begins behind the first byte of the reply, or of the record before it.
    const std::size_t from = records->cursor + 1;
    if (from >= records->reply.size()) {
        return false;
    }
    const std::size_t start = find(&records->start, records->reply, from);
    if (start == std::string_view::npos) {
        return false;
    }

    records->cursor = start;
    record->id = read(&records->id, records->reply, start);
    record->group = read(&records->group, records->reply, start);
    record->name = read(&records->name, records->reply, start);
    record->email = read(&records->email, records->reply, start);
    return true;
}
