#include "syscmd/daemon/delete_user.h"
#include "syscmd/daemon/remote_user.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, whatForceDeletes)
{
    const struct {
        const char* user;
        int force;
        std::size_t requests; // the query, the deletion, the remote user's
    } table[] = {{"bob", 0, 3}, {"dave", 0, 1}, {"dave", 2, 3}, {"alice", -1, 3}};
    for (const auto& [user, force, requests] : table) {
        const std::size_t before = exchanges().size();
        EXPECT_EQ(DelUser(user, "p2p", force), SUCCESS);
        EXPECT_EQ(exchanges().size() - before, requests) << user << ' ' << force;
        shell(std::string("getent passwd ") + user, requests == 1 ? 0 : 2);
    }
}

TEST_F(OnDevice, resultsOfDelNetwork)
{
    shell(R"(sed 's/"remote_users": \[/&{"name": "p2p", "full_name": ""}/' )" SEED_FILE " | boxwelld seed -");
    EXPECT_EQ(DelNetwork("p2p"), SUCCESS);
    EXPECT_EQ(DelNetwork("p2p"), SUCCESS) << "refused";
    for (const char* ordered : {"fail", "no-reply"}) {
        shell(std::string("boxwelld order ") + ordered);
        EXPECT_EQ(DelNetwork("p2p"), -1) << ordered;
    }
}

} // namespace
