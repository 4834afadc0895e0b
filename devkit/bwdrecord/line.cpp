#include "devkit/bwdrecord/line.h"

#include "devkit/bwdrecord/format.h"
#include "devkit/bwdrecord/pseudonym.h"
#include "devkit/bwdrecord/redacted.h"

#include <cstring>

namespace {

void add(Text* out, const char* text)
{
    text_add(out, text, std::strlen(text));
}

/** Adds a number; printf takes longer than the rest of a short line. */
void add_number(Text* out, std::int64_t value, std::ptrdiff_t digits = 1)
{
    char text[24];
    char* const end = text + sizeof text;
    char* at = end;
    auto left = static_cast<std::uint64_t>(value < 0 ? -value : value);
    while (left > 0 || end - at < digits) {
        *--at = static_cast<char>('0' + left % 10);
        left /= 10;
    }
    if (value < 0) {
        *--at = '-';
    }
    text_add(out, at, static_cast<std::size_t>(end - at));
}

void add_text(
    Text* out, const char* name, const char* text, std::size_t length, const Piece& request
)
{
    add(out, name);
    if (text == nullptr || length > LONGEST_RECORDED) {
        add(out, "null");
        return;
    }
    add(out, "\"");
    add_redacted(out, text, length, request);
    add(out, "\"");
}

} // namespace

void add_header(Text* out)
{
    text_add_format(
        out, "{\"format\":\"%s\",\"version\":%d,\"names\":\"%s\"}\n", RECORDING_FORMAT,
        RECORDING_VERSION, pseudonyms_wanted() ? NAMES_KEYED : NAMES_PLAIN
    );
}

void add_call(Text* out, const Call& call)
{
    constexpr std::int64_t SECOND = 1000000;
    const Piece request = {PieceKind::Plain, call.request, call.request_length};
    add(out, "{\"kind\":\"call\",\"pid\":");
    add_number(out, call.pid);
    add(out, ",\"n\":");
    add_number(out, static_cast<std::int64_t>(call.number));
    add(out, ",\"time\":");
    add_number(out, call.began_us / SECOND);
    add(out, ".");
    add_number(out, call.began_us % SECOND, 6);
    add(out, ",\"us\":");
    add_number(out, call.took_us);
    add(out, ",\"result\":");
    add_number(out, call.result);
    add(out, ",\"errno\":");
    add_number(out, call.error);
    add(out, ",\"request_length\":");
    add_number(out, static_cast<std::int64_t>(call.request_length));
    add_text(out, ",\"request\":", call.request, call.request_length, request);
    add(out, ",\"reply_length\":");
    add_number(out, static_cast<std::int64_t>(call.reply_length));
    add_text(out, ",\"reply\":", call.reply, call.reply_length, request);
    add(out, "}\n");
}
