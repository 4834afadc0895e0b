#include "devkit/bwdrecord/line.h"

#include "devkit/bwdrecord/format.h"
#include "devkit/bwdrecord/pseudonym.h"

#include <cstring>

namespace {

void add(Text* out, const char* text)
{
    text_add(out, text, std::strlen(text));
}

void add_member(
    Text* out, const char* name, const char* text, std::size_t length, const Piece& request
)
{
    text_add_format(out, ",\"%s_length\":%zu,\"%s\":", name, length, name);
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
    const Piece request = {PieceKind::Plain, call.request, call.request_length};
    text_add_format(
        out,
        "{\"kind\":\"call\",\"pid\":%d,\"n\":%lu,\"time\":%lld.%06lld,\"us\":%lld,\"result\":%d,"
        "\"errno\":%d",
        call.pid, call.number, static_cast<long long>(call.began_us / 1000000),
        static_cast<long long>(call.began_us % 1000000), static_cast<long long>(call.took_us),
        call.result, call.error
    );
    add_member(out, "request", call.request, call.request_length, request);
    add_member(out, "reply", call.reply, call.reply_length, request);
    add(out, "}\n");
}
