// The tables beside the loop.
#include "tests/faults/sweep.h"

#include <fstream>
#include <nlohmann/json.hpp>

using nlohmann::json;

static json table(const char* name)
{
    std::ifstream file(std::string(TABLES) + name);
    return json::parse(file);
}

static TTransactionCode codeOf(const json& row)
{
    const std::string name = row["code"];
    return name == "CODE_SUCCEED" ? CODE_SUCCEED : name == "CODE_NOREPLY" ? CODE_NOREPLY : CODE_FAILED;
}

const std::vector<Variant>& variants()
{
    static const std::vector<Variant> all = [] {
        std::vector<Variant> rows;
        for (const json& row : table("commands.json")) {
            Variant variant = {row["name"], {row["words"], {}, 7}, codeOf(row), row["response"], {}};
            if (row.contains("as")) {
                variant.command.credentials = row["as"];
            }
            const std::string prepared = row.value("prepared", "");
            variant.state = {prepared == "records", prepared == "ownerless", row.value("refused", "")};
            rows.push_back(variant);
        }
        return rows;
    }();
    return all;
}

const std::vector<Forced>& forced()
{
    static const std::vector<Forced> all = [] {
        std::vector<Forced> rows;
        for (const json& row : table("forced.json")) {
            rows.push_back({row["outcome"], row["commands"], row["faults"], codeOf(row), row["difference"]});
        }
        return rows;
    }();
    return all;
}
