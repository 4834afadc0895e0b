#include "devkit/broker/explain/explain.h"

#include "devkit/broker/explain/lines.h"
#include "devkit/broker/explain/reader.h"
#include "devkit/broker/explain/tell.h"

#include <cstdio>

namespace {

using Json = nlohmann::ordered_json;

/** For so many times two seconds a command waits for its next statement: longer than the client
 * library waits for the daemon. */
constexpr int QUIETS_UNTIL_END = 18;

/** Prints what is told, as it comes or as one document at the end. */
class Output {
  public:
    explicit Output(const ExplainOptions& options) : options_(options) {}

    void print(const Item& item)
    {
        if (item.story) {
            const auto facts = memory_.facts_of(*item.story);
            print({*item.story, recipes_for(*item.story, facts)});
        } else if (!options_.json) {
            write(item.line + '\n');
        } else if (options_.follow) {
            write(line_of({{"unknown", item.line}}));
        } else {
            unknown_.push_back(item.line);
        }
    }

    void end() const
    {
        if (options_.json && !options_.follow) {
            write(
                Json({{"log", options_.log}, {"commands", commands_}, {"unknown", unknown_}}
                ).dump(2, ' ', false, Json::error_handler_t::replace) +
                '\n'
            );
        }
    }

  private:
    void print(const Explained& explained)
    {
        if (!options_.json) {
            write(for_people(explained, told_));
        } else if (options_.follow) {
            write(line_of(as_json(explained)));
        } else {
            commands_.push_back(as_json(explained));
        }
    }

    static std::string line_of(const Json& json)
    {
        return json.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
    }

    static void write(const std::string& text)
    {
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
    }

    const ExplainOptions& options_;
    Memory memory_;
    std::set<const Recipe*> told_;
    Json commands_ = Json::array();
    Json unknown_ = Json::array();
};

void tell_unknown(const ExplainOptions& options, bool is_empty)
{
    const std::string name = options.log == "-" ? "standard input" : options.log;
    std::fprintf(
        stderr, "broker: %s\n",
        is_empty ? (name + " is empty").c_str()
                 : (name + " holds no statement of the plug-in: expected /var/log/shbroker.log, or "
                           "journalctl's entries of CATEGORY=shbroker as text or JSON")
                       .c_str()
    );
}

} // namespace

bool explain_log(const ExplainOptions& options)
{
    Lines lines(options.log, options.follow);
    Reader reader;
    Output output(options);
    const auto print_finished = [&] {
        while (const auto item = reader.next()) {
            output.print(*item);
        }
    };
    std::string line;
    bool is_empty = true;
    int quiets = 0;
    for (auto next = lines.next(line); next != Lines::Next::End; next = lines.next(line)) {
        if (next == Lines::Next::Line) {
            is_empty = false;
            quiets = 0;
            reader.read(line);
        } else if (++quiets == QUIETS_UNTIL_END) {
            reader.end();
        } else {
            reader.rest();
        }
        print_finished();
    }
    reader.end();
    print_finished();
    output.end();
    if (reader.statements() == 0 && !options.follow) {
        tell_unknown(options, is_empty);
        return false;
    }
    return true;
}
