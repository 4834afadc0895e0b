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

/** Adds "missing: a, b and 3 more" unless there are no such names. */
void tell(Texts& wrong, const char* what, const Texts& names)
{
    constexpr std::size_t MOST_SHOWN = 4;
    if (!names.empty()) {
        wrong.push_back(what + joined(names, ", ", MOST_SHOWN));
    }
}

} // namespace

Row exports_row(const ElfFile& file)
{
    const Kinds wanted = listed();
    const Kinds actual = exported(file);
    Texts missing;
    Texts other_kind;
    Texts surplus;
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
    Texts wrong;
    tell(wrong, "missing: ", missing);
    tell(wrong, "of another kind: ", other_kind);
    tell(wrong, "surplus: ", surplus);
    Row row = {
        "exports",
        std::to_string(wanted.size() - missing.size()) + " of " + std::to_string(wanted.size()) +
            ", " + std::to_string(surplus.size()) + " surplus",
        {}};
    if (!wrong.empty()) {
        row.finding = {
            joined(wrong, "; "),
            "the broker and its other plug-ins find these by name and use them as what they are; a "
            "surplus name can take the place of another library's",
            "link with -Wl,--version-script=exports.map, and compile with the signatures of the "
            "headers and the C++ library's std::__cxx11::string (_GLIBCXX_USE_CXX11_ABI=1)"};
    }
    return row;
}
