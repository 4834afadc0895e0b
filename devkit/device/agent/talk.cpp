#include "devkit/device/agent/talk.h"

#include "devkit/bwdclient/frame.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>

namespace {

constexpr std::size_t MOST_DESCRIPTORS = 3;

/** Binds or connects a new socket by a descriptor of its folder: its own path may be too long. */
Fd join(decltype(&connect) call, const std::string& folder)
{
    const Fd place = open_file(folder, O_PATH | O_DIRECTORY);
    const std::string path = "/proc/self/fd/" + std::to_string(place.get()) + "/agent.sock";
    sockaddr_un address{};
    Fd made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (call == &bind) {
        unlink(path.c_str());
    }
    if (made.get() < 0 || frame_address(path.c_str(), &address) != 0 ||
        call(made.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw_errno(folder + "/agent.sock");
    }
    return made;
}

/** A message of a few bytes, with room for descriptors. */
struct Message {
    Message(void* bytes, std::size_t length) : part{bytes, length}
    {
        header.msg_iov = &part;
        header.msg_iovlen = 1;
    }
    iovec part;
    msghdr header{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(MOST_DESCRIPTORS * sizeof(int))> control{};
};

bool send_message(const Fd& socket, Message& message, const int* descriptors, std::size_t count)
{
    if (count > 0) {
        message.header.msg_control = message.control.data();
        message.header.msg_controllen = CMSG_SPACE(count * sizeof(int));
        cmsghdr* control = CMSG_FIRSTHDR(&message.header);
        control->cmsg_level = SOL_SOCKET;
        control->cmsg_type = SCM_RIGHTS;
        control->cmsg_len = CMSG_LEN(count * sizeof(int));
        std::memcpy(CMSG_DATA(control), descriptors, count * sizeof(int));
    }
    ssize_t sent = 0;
    do {
        sent = sendmsg(socket.get(), &message.header, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(message.part.iov_len);
}

/** The descriptors that came with the message; nothing when it did not come as a whole. */
std::optional<std::vector<Fd>> receive_message(const Fd& socket, Message& message)
{
    message.header.msg_control = message.control.data();
    message.header.msg_controllen = message.control.size();
    ssize_t got = 0;
    do {
        got = recvmsg(socket.get(), &message.header, MSG_CMSG_CLOEXEC | MSG_WAITALL);
    } while (got < 0 && errno == EINTR);
    std::vector<Fd> descriptors;
    const cmsghdr* control = got > 0 ? CMSG_FIRSTHDR(&message.header) : nullptr;
    if (control != nullptr && control->cmsg_type == SCM_RIGHTS) {
        std::array<int, MOST_DESCRIPTORS> numbers{};
        const std::size_t bytes = control->cmsg_len - CMSG_LEN(0);
        std::memcpy(numbers.data(), CMSG_DATA(control), bytes);
        for (std::size_t i = 0; i < bytes / sizeof(int); ++i) {
            descriptors.emplace_back(numbers[i]);
        }
    }
    if (got != static_cast<ssize_t>(message.part.iov_len)) {
        return std::nullopt;
    }
    return descriptors;
}

/** Every text ends with a NUL: kind, folder, number of the command's words, these, the environment.
 */
std::string encode(const Request& request)
{
    std::string text =
        request.kind + '\0' + request.folder + '\0' + std::to_string(request.command.size()) + '\0';
    for (const auto* words : {&request.command, &request.environment}) {
        for (const std::string& word : *words) {
            text += word + '\0';
        }
    }
    return text;
}

std::optional<Request> decode(const std::string& text)
{
    std::istringstream words(text);
    Request request;
    std::string count;
    std::getline(words, request.kind, '\0');
    std::getline(words, request.folder, '\0');
    std::getline(words, count, '\0');
    const std::size_t command_words = std::strtoul(count.c_str(), nullptr, 10);
    for (std::string word; std::getline(words, word, '\0');) {
        auto& list = request.command.size() < command_words ? request.command : request.environment;
        list.push_back(word);
    }
    if (request.command.size() != command_words ||
        (request.kind == "run") != !request.command.empty()) {
        return std::nullopt;
    }
    return request;
}

} // namespace

Fd listen_in(const std::string& folder)
{
    Fd socket = join(&bind, folder);
    if (listen(socket.get(), SOMAXCONN) != 0) {
        throw_errno(folder + "/agent.sock");
    }
    return socket;
}

Fd connect_in(const std::string& folder)
{
    return join(&connect, folder);
}

void send_request(const Fd& socket, const Request& request)
{
    constexpr std::array<int, 3> STREAMS{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    const std::string text = encode(request);
    char mark = 0;
    Message message(&mark, sizeof mark);
    if (!send_message(socket, message, STREAMS.data(), STREAMS.size()) ||
        frame_send(
            socket.get(), text.data(), static_cast<std::uint32_t>(text.size()),
            frame_deadline(TALK_MS)
        ) != 0) {
        throw_errno("the device's agent");
    }
}

std::optional<Request> receive_request(const Fd& socket)
{
    char mark = 0;
    Message message(&mark, sizeof mark);
    auto descriptors = receive_message(socket, message);
    char* text = nullptr;
    std::uint32_t length = 0;
    if (!descriptors || descriptors->size() != MOST_DESCRIPTORS ||
        frame_receive(socket.get(), &text, &length, frame_deadline(TALK_MS)) != 0 ||
        text == nullptr) {
        return std::nullopt;
    }
    const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
    auto request = decode(std::string(text, length));
    if (request) {
        request->streams = std::move(*descriptors);
    }
    return request;
}

bool send_answer(const Fd& socket, Sort sort, int status, int terminal)
{
    std::array<unsigned char, 2> bytes{
        static_cast<unsigned char>(sort), static_cast<unsigned char>(status)};
    Message message(bytes.data(), bytes.size());
    return send_message(socket, message, &terminal, terminal < 0 ? 0 : 1);
}

std::optional<Answer> receive_answer(const Fd& socket)
{
    std::array<unsigned char, 2> bytes{};
    Message message(bytes.data(), bytes.size());
    auto descriptors = receive_message(socket, message);
    if (!descriptors) {
        return std::nullopt;
    }
    return Answer{
        static_cast<Sort>(bytes[0]), bytes[1],
        descriptors->empty() ? Fd(-1) : std::move(descriptors->front())};
}
