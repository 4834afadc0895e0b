#include "devkit/broker/check/check.h"

#include "devkit/broker/check/rules.h"
#include "devkit/broker/check/trial.h"
#include "devkit/broker/command.h"

#include <algorithm>
#include <iterator>

namespace {

const Profile* chosen(const std::string& name)
{
    const Profile* profile = profile_named(name);
    if (profile == nullptr) {
        std::string known;
        for (const Profile& each : profiles()) {
            known += ' ' + each.name;
        }
        throw BadUse("no profile " + name + "; there are" + known);
    }
    return profile;
}

Row not_a_library(const std::string& what)
{
    return {
        "file", what,
        Finding{
            "it " + what, "the loader refuses it",
            "copy the file again, or link a shared library (-shared) and keep its section "
            "headers"}};
}

void add(Report& report, std::vector<Row> rows)
{
    std::move(rows.begin(), rows.end(), std::back_inserter(report.rows));
}

void judge(Report& report, const ElfFile& file, const Profile& profile)
{
    report.profile = profile.name;
    report.rows.push_back(machine_row(file, profile));
    if (findings(report) != 0) {
        return; // of another machine nothing else can be said
    }
    add(report, loading_rows(file, profile));
    const bool loadable = findings(report) == 0;
    add(report, quality_rows(file, profile));
    report.rows.push_back(loadable ? trial_row(report.library, profile) : no_trial_row());
}

} // namespace

Report check_library(const std::string& library, const std::string& profile)
{
    const Profile* wanted = profile.empty() ? nullptr : chosen(profile);
    Report report = {library, profile, {}};
    try {
        const ElfFile file = read_elf(library);
        const Profile* of_machine = profile_for(file.machine);
        judge(
            report, file,
            wanted != nullptr       ? *wanted
            : of_machine != nullptr ? *of_machine
                                    : profiles().front()
        );
    } catch (const NotALibrary& error) {
        report.rows.push_back(not_a_library(error.what()));
    }
    return report;
}
