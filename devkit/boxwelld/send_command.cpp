#include "common/mxl/bwdclient.h"
#include "devkit/boxwelld/command_line.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace {

constexpr std::string_view AUTHORIZATION = "Authorization: ";

/** The request as the daemon takes it: logs and transcripts have a mere line feed behind the name.
 */
std::string with_line_end(std::string request)
{
    const std::size_t end = request.find('\n');
    if (request.starts_with(AUTHORIZATION) && end != std::string::npos &&
        request[end - 1] != '\r') {
        request.insert(end, 1, '\r');
    }
    return request;
}

Refusal failure(const std::string& socket)
{
    switch (errno) {
    case ENOENT:
    case ECONNREFUSED:
        return Refusal(
            "no daemon listens at " + socket + "; boxwelld revive starts a device's again"
        );
    case EPROTO:
        return Refusal("the daemon closed the connection before there was a whole reply");
    case ETIMEDOUT:
        return Refusal("no reply within 30 s, or what BOXWELLD_TIMEOUT_MS says");
    default:
        return Refusal(socket + ": " + std::generic_category().message(errno));
    }
}

/** One exchange, by the client library's own call; the reply's text for people to read or pipe on.
 */
std::string reply_to(std::string request, const std::string& socket)
{
    if (request.size() > FRAME_MAX_BYTES) {
        throw Refusal("the request is longer than 64 MiB");
    }
    setenv("BOXWELLD_SOCKET", socket.c_str(), 1);
    char* reply = nullptr;
    int length = 0;
    const auto size = static_cast<int>(request.size());
    if (process_request_bwdclient(request.data(), size, &reply, &length) != 0) {
        throw failure(socket);
    }
    const std::unique_ptr<char, decltype(&free)> owner(reply, free);
    return owner ? std::string(reply, static_cast<std::size_t>(length)) : "(no reply)";
}

} // namespace

void add_send_command(CLI::App& app, Files& files)
{
    CLI::App* command =
        app.add_subcommand("send", "send a request's text to the daemon, print the reply");
    const auto file = std::make_shared<std::string>();
    command->add_option("FILE", *file, "the request's text, - for standard input")->required();
    const CLI::Option* socket = add_file_option(
        *command, "--socket", files.paths.socket, "BOXWELLD_SOCKET", "Unix socket of the daemon"
    );
    command->callback([file, socket, &files] {
        expect_device_or({socket});
        print(reply_to(with_line_end(read_text(*file)), files.paths.socket) + '\n');
    });
}
