#include "devkit/broker/check/exports.h"

#include "devkit/broker/check/exports_list.h"

#include <cxxabi.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>

namespace {

using Kinds = std::map<std::string, std::string>; // by name

Kinds listed()
{
    Kinds kinds;
    std::istringstream lines(EXPORTS);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.front() != '#') {
            const auto blank = line.find(' ');
            kinds[line.substr(blank + 1)] = line.substr(0, blank);
        }
    }
    return kinds;
}

Kinds exported(const ElfFile& file)
{
    Kinds kinds;
    for (const ElfSymbol& symbol : file.exports) {
        kinds[symbol.name] = symbol.kind;
    }
    return kinds;
}

/** The name as written, and its signature where it has one. */
std::string for_reader(const std::string& name)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&free)> text(
        abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), free
    );
    return text == nullptr || name.compare(0, 2, "_Z") != 0 ? name : name + " (" + text.get() + ')';
}

/** `items` as "missing: a, b and 3 more; " or nothing. */
std::string part(const char* what, const std::vector<std::string>& items)
{
    constexpr std::size_t SHOWN = 4;
    std::string text;
    for (std::size_t i = 0; i < items.size() && i < SHOWN; ++i) {
        text += (i == 0 ? std::string(what) + ": " : ", ") + items[i];
    }
    if (items.size() > SHOWN) {
        text += " and " + std::to_string(items.size() - SHOWN) + " more";
    }
    return text;
}

std::string joined(const std::vector<std::string>& parts)
{
    std::string text;
    for (const std::string& each : parts) {
        text += text.empty() || each.empty() ? "" : "; ";
        text += each;
    }
    return text;
}

} // namespace

Row exports_row(const ElfFile& file)
{
    const Kinds wanted = listed();
    const Kinds actual = exported(file);
    std::vector<std::string> missing;
    std::vector<std::string> other_kind;
    std::vector<std::string> surplus;
    for (const auto& [name, kind] : wanted) {
        const auto found = actual.find(name);
        if (found == actual.end()) {
            missing.push_back(for_reader(name));
        } else if (found->second != kind) {
            other_kind.push_back(name);
            other_kind.back().append(" is ").append(found->second).append(", not ").append(kind);
        }
    }
    for (const auto& [name, kind] : actual) {
        if (wanted.count(name) == 0) {
            surplus.push_back(for_reader(name));
        }
    }
    const std::string wrong = joined(
        {part("missing", missing), part("of another kind", other_kind), part("surplus", surplus)}
    );
    Row row = {
        "exports",
        std::to_string(wanted.size() - missing.size()) + " of " + std::to_string(wanted.size()) +
            ", " + std::to_string(surplus.size()) + " surplus",
        {}};
    if (!wrong.empty()) {
        row.finding = {
            wrong,
            "the broker and its other plug-ins find these by name and use them as what they are; a "
            "surplus "
            "name can take the place of another library's",
            "link with -Wl,--version-script=exports.map, and compile with the signatures of the "
            "headers and "
            "the C++ library's std::__cxx11::string (_GLIBCXX_USE_CXX11_ABI=1)"};
    }
    return row;
}
