/**
 * device-exec FOLDER run COMMAND [ARG...]
 * device-exec FOLDER stop
 *
 * Runs COMMAND on the device whose state is in FOLDER, with this process's streams, environment and
 * current folder, passes on signals, and exits as it does: 125 when there is no such device, or it
 * ends before. Where standard input and output are terminals, the command has one of the device's
 * own, which this process shows. "stop" asks the device to end, and returns at once.
 */
#include "devkit/device/agent/conversation.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace {

Request read_request(int argc, char** argv)
{
    Request request{.kind = argv[2]};
    if (request.kind == "run") {
        std::error_code unknown; // a folder that is no more
        request.folder = std::filesystem::current_path(unknown);
        request.command.assign(argv + 3, argv + argc);
        for (char** entry = environ; *entry != nullptr; ++entry) {
            request.environment.emplace_back(*entry);
        }
    }
    return request;
}

int run(int argc, char** argv)
{
    const std::string_view kind = argc > 2 ? argv[2] : "";
    if ((kind != "run" || argc < 4) && (kind != "stop" || argc > 3)) {
        std::fputs(
            "usage: device-exec FOLDER run COMMAND [ARG...]\n"
            "       device-exec FOLDER stop\n",
            stderr
        );
        return 2;
    }
    Fd agent = connect_in(argv[1]);
    const Request request = read_request(argc, argv);
    if (kind == "run") {
        return Conversation(std::move(agent)).hold(request);
    }
    send_request(agent, request);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "device: %s\n", error.what());
        return CANNOT;
    }
}
