// Replacing: a grid of lengths and of distances between matches, beside the best of three peers.
#include "bench/families.h"
#include "bench/growth.h"
#include "bench/measure.h"

#include <absl/strings/str_replace.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace {

/** What is replaced by what in a text: no constants, of which a compiler would make more for the
 * peers than for a library. */
struct Job {
    std::string text;
    std::string search;
    std::string replace;
    std::size_t result_size; // with its NUL
};

/** A text of at least so many bytes, with a match behind every `gap` others. */
Job jobOf(std::size_t size, std::size_t gap, const std::string& search, const std::string& replace)
{
    Job job = {"", search, replace, 0};
    std::size_t matches = 0;
    while (job.text.size() < size) {
        for (std::size_t i = 0; i < gap; ++i) {
            job.text += static_cast<char>('a' + (matches * 7 + i * 3) % 26);
        }
        job.text += search;
        ++matches;
    }
    job.result_size = job.text.size() + matches * replace.size() - matches * search.size() + 1;
    return job;
}

Text replaceOurs(const Job& job)
{
    return Text(ptReplaceStr(job.text.c_str(), job.search.c_str(), job.replace.c_str()));
}

/** What a peer returns: a string, or else a block. */
struct Replaced {
    std::string text;
    Text block = nullptr;
};

bool same(const Text& one, const Replaced& other)
{
    const char* text = other.block != nullptr ? other.block.get() : other.text.c_str();
    return one != nullptr && std::strcmp(one.get(), text) == 0;
}

// Peers are given what ptReplaceStr() is given: a C string, whose end is to be found.

/** The floor: one pass that finds, by memchr and memcmp, and writes, into a result that is large
 * enough beforehand. */
Replaced replaceBarely(const Job& job)
{
    char* const result = static_cast<char*>(std::malloc(job.result_size));
    char* to = result;
    const char* from = job.text.c_str();
    const char* const end = from + std::strlen(from);
    const char* at = from;
    while ((at = static_cast<const char*>(
                std::memchr(at, job.search[0], static_cast<std::size_t>(end - at))
            )) != nullptr) {
        if (std::strncmp(at, job.search.c_str(), job.search.size()) != 0) {
            ++at;
            continue;
        }
        to = static_cast<char*>(mempcpy(to, from, static_cast<std::size_t>(at - from)));
        to = static_cast<char*>(mempcpy(to, job.replace.c_str(), job.replace.size()));
        at += job.search.size();
        from = at;
    }
    to = static_cast<char*>(mempcpy(to, from, static_cast<std::size_t>(end - from)));
    *to = '\0';
    return {"", Text(result)};
}

Replaced replaceByStrings(const Job& job)
{
    const std::string_view text = job.text.c_str();
    std::string result;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = text.find(job.search, from)) != std::string_view::npos;
         from = at + job.search.size()) {
        result.append(text, from, at - from).append(job.replace);
    }
    result.append(text, from);
    return {std::move(result)};
}

Replaced replaceByAbsl(const Job& job)
{
    return {absl::StrReplaceAll(job.text.c_str(), {{job.search, job.replace}})};
}

Text replaceBySplitting(const Job& job)
{
    const StringVector pieces(g_strsplit(job.text.c_str(), job.search.c_str(), -1));
    return Text(g_strjoinv(job.replace.c_str(), pieces.get()));
}

struct Peer {
    const char* name;
    Replaced (*replace)(const Job&);
};

constexpr Peer PEERS[] = {
    {"one pass", replaceBarely},
    {"std::string loop", replaceByStrings},
    {"absl::StrReplaceAll", replaceByAbsl},
};

/** Against the quickest of the peers, which a trial finds. */
void benchPoint(Frame& frame, const std::string& name, const Job& job)
{
    if (!frame.wants(name)) {
        return;
    }
    const Peer* best = nullptr;
    double least = 0;
    for (const Peer& peer : PEERS) {
        const double seconds = quickest([&] { peer.replace(job); });
        if (best == nullptr || seconds < least) {
            best = &peer;
            least = seconds;
        }
    }
    frame.compare(
        {.name = name, .against = best->name, .goal = 1}, [&] { return replaceOurs(job); },
        [&] { return best->replace(job); }
    );
}

void benchGrid(Frame& frame)
{
    struct Kind {
        const char* name;
        const char* search;
        const char* replace;
    };
    constexpr Kind KINDS[] = {
        {"longer", "&", "&amp;"},
        {"shorter", "<name>", "x"},
        {"much longer", "<name>", "a name that is longer than its mark"},
    };
    for (const std::size_t kib : {64U, 1024U}) {
        for (const std::size_t gap : {5U, 20U, 100U, 1000U}) {
            for (const Kind& kind : KINDS) {
                const std::string name = "ptReplaceStr, " + std::to_string(kib) + " KiB, every " +
                                         std::to_string(gap) + ", " + kind.name;
                benchPoint(frame, name, jobOf(kib << 10, gap, kind.search, kind.replace));
            }
        }
    }
}

} // namespace

void benchReplace(Frame& frame)
{
    benchGrid(frame);
    const char* name = "ptReplaceStr, 50,000 matches";
    const Job job = jobOf(500000, 9, "&", "&amp;");
    frame.compare(
        {.name = name, .against = "g_strsplit, g_strjoinv", .goal = 0.3},
        [&] { return replaceOurs(job); }, [&] { return replaceBySplitting(job); }
    );
    frame.grows(name, 25000, [](std::size_t matches) {
        return [job = jobOf(10 * matches, 9, "&", "&amp;")] {
            replaceOurs(job);
        };
    });
    // Where a search begins everywhere and ends nowhere.
    frame.grows("ptReplaceStr, in vain", 20000, [](std::size_t size) {
        return
            [job = Job{std::string(size, 'a'), std::string(size / 2, 'a') + "b", "c", size + 1}] {
                replaceOurs(job);
            };
    });
}

void growReplace(Growth& growth)
{
    growth.measure("replace", {100, 1000, 10000, 100000, 1000000, 10000000}, [](std::size_t bytes) {
        const auto job = std::make_shared<Job>(jobOf(bytes, 9, "&", "&amp;"));
        Curves curves = {curveOf("ptReplaceStr", [job] { return replaceOurs(*job); })};
        for (const Peer& peer : PEERS) {
            curves.push_back(curveOf(peer.name, [job, peer] { return peer.replace(*job); }));
        }
        return curves;
    });
}
