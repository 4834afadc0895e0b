#include "common/isowner.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, lockFlagAndName)
{
    const struct {
        const char* ordered; // nothing: the daemon's own answer
        int flag;
        const char* name;
    } table[] = {{"", 1, "carol"}, {"reply '<IsLocked>7</IsLocked>'", 7, ""},
        {"reply '<IsLocked>-1x</IsLocked>'", -1, ""}, {"reply '<IsLocked>010</IsLocked>'", 10, ""}, {"reply x", 0, ""},
        {"fail", 1, "(null)"}, {"no-reply", 1, "(null)"}};
    for (const auto& [ordered, flag, name] : table) {
        shell(*ordered == '\0' ? ":" : std::string("boxwelld order ") + ordered);
        Owned spelled;
        EXPECT_EQ(isLocked("carol", &spelled.text), flag) << ordered;
        EXPECT_EQ(spelled.read(), name) << ordered;
    }
    for (const char* group : {"sky-hol", "sky-holders", "Sky-Hold"})
        EXPECT_EQ(isUserInGroup("bob", group), 0) << group;
    EXPECT_EQ(isUserInGroup("bob", nullptr), 0);
}

} // namespace
