#include "devkit/broker/replay/player.h"

#include "devkit/broker/record/redaction.h"
#include "devkit/bwdplayer/bwdplayer.h"

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

Player* current = nullptr;
BwdAnswer* real = nullptr;

template<class Symbol> Symbol* symbol(const char* library, int scope, const char* name)
{
    const std::string path =
        std::filesystem::read_symlink("/proc/self/exe").replace_filename(library);
    void* handle = dlopen(path.c_str(), RTLD_NOW | scope);
    auto* found = handle == nullptr ? nullptr : reinterpret_cast<Symbol*>(dlsym(handle, name));
    if (found == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return found;
}

/** The operation of a request, by its tag and resource type: what two requests of one kind share.
 */
std::string kind_of(const std::string& request)
{
    const std::size_t tag = request.find("<xs:transaction");
    const std::size_t operation = request.find("<xs:", tag == std::string::npos ? 0 : tag + 1);
    const std::size_t type = request.find(" resource-type=", operation);
    if (operation == std::string::npos || type == std::string::npos) {
        return request;
    }
    return request.substr(operation, request.find(' ', operation) - operation) +
           request.substr(type, request.find('"', type + 16) - type);
}

/** Has the device's own daemon make the recorded change, for passwd and group to follow. */
void make_change(const RecordedCall& call)
{
    if (!call.reply || call.reply->find("status=\"success\"") == std::string::npos ||
        kind_of(*call.request).starts_with("<xs:query")) {
        return;
    }
    std::string request = *call.request;
    char* reply = nullptr;
    int length = 0;
    if (real(request.data(), static_cast<int>(request.size()), &reply, &length) == 0) {
        std::free(reply);
    }
}

} // namespace

void Player::take_the_daemons_place()
{
    real = symbol<BwdAnswer>("libbwdclient.so", RTLD_LOCAL, "process_request_bwdclient");
    *symbol<BwdAnswer*>("libbwdplayer.so", RTLD_GLOBAL, "bwdplayer_answer") = answer;
}

Player::Player(const RecordedCommand& command, bool keyed)
    : command_(command), renaming_(keyed, command.words), played_(command.calls.size())
{
    current = this;
}

Player::~Player()
{
    current = nullptr;
}

std::vector<std::string> Player::made() const
{
    std::vector<std::string> all;
    for (const std::string& request : made_) {
        all.push_back(renaming_.as_recorded(request));
    }
    return all;
}

int Player::answer(char* request, int length, char** reply, int* reply_length)
{
    if (current == nullptr) {
        errno = ENOTCONN;
        return -1;
    }
    return current->play({request, static_cast<std::size_t>(length)}, reply, reply_length);
}

/** The recorded call of the same request: the next, or one behind it, or one before it; or else the
 * next if it is of the same kind, so that what follows can be compared, too. */
const RecordedCall* Player::find(const std::string& request)
{
    const std::size_t count = command_.calls.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = (next_ + i) % count;
        if (!played_[at] && renaming_.matches(*command_.calls[at].request, request)) {
            next_ = std::max(next_, at + 1);
            played_[at] = true;
            return &command_.calls[at];
        }
    }
    if (next_ < count && !played_[next_] &&
        kind_of(*command_.calls[next_].request) == kind_of(request)) {
        played_[next_] = true;
        return &command_.calls[next_++];
    }
    return nullptr;
}

int Player::play(const std::string& request, char** reply, int* reply_length)
{
    made_.push_back(without_secrets(request));
    const RecordedCall* call = find(made_.back());
    if (call == nullptr) {
        errno = EPROTO;
        return -1;
    }
    make_change(*call);
    if (call->result == 0) {
        *reply = call->reply ? strndup(call->reply->c_str(), call->reply->size()) : nullptr;
        *reply_length = call->reply ? static_cast<int>(call->reply->size()) : 0;
    }
    errno = call->error;
    return call->result;
}
