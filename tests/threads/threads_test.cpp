// What a host may call on several threads at once; the preset tsan builds it with ThreadSanitizer.
#include "common/device/accounts.h"
#include "common/hash.h"
#include "common/io.h"
#include "liblst/liblst.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

/** The results of one thread's calls. */
std::string work()
{
    std::string results;
    const auto add = [&](char* text) {
        results += std::unique_ptr<char, void (*)(void*)>(text, std::free).get();
        results += ' ';
    };
    for (int i = 0; i < 20; ++i) {
        char* cut = nullptr;
        CutStr(&cut, "a <b>c</b>", "<b>", "</b>");
        add(cut);
        add(SMB_enc_passwd("secret"));
        add(SYS_enc_passwd("secret"));
        char* id = nullptr;
        GetUserIDByUsername(&id, "root");
        add(id);
        add(String("%d", i));
    }
    return results;
}

TEST(Threads, HaveResultsOfTheirOwn)
{
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::string& result : results) {
        threads.emplace_back([&] { result = work(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_NE(results[0].find("c 878D"), std::string::npos) << results[0];
    for (const std::string& result : results) {
        EXPECT_EQ(result, results[0]); // the generators begin alike
    }
}

} // namespace
