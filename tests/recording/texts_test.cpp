// What a recording tells of texts: without secrets, by pseudonyms, and what a reader makes of damaged files.
#include "devkit/broker/record/log_file.h"
#include "devkit/broker/record/redaction.h"
#include "devkit/bwdrecord/pseudonym.h"
#include "devkit/bwdrecord/redacted.h"
#include "devkit/recording/characters.h"
#include "devkit/recording/recording.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>

namespace {

/** The text as the library writes it: inside a JSON string. */
std::string as_json(const std::string& text, const std::string& request = "")
{
    const std::vector<char> exact(text.begin(), text.end()); // nothing readable behind its end
    Text out;
    add_redacted(&out, exact.data(), exact.size(), {PieceKind::Plain, request.data(), request.size()});
    const std::string json(out.bytes == nullptr ? "" : out.bytes, out.length);
    text_free(&out);
    return json;
}

std::string written(const std::string& text, const std::string& request = "")
{
    return as_bytes(nlohmann::json::parse('"' + as_json(text, request) + '"').get<std::string>());
}

std::string in_element(const std::string& name, const std::string& value)
{
    return '<' + name + "><![CDATA[" + value + "]]></" + name + '>';
}

TEST(Secrets, AreNotWritten)
{
    const std::string pair = "NEUzOiQxJGEkYg==";
    const struct {
        std::string text;
        std::string shown;
    } cases[] = {
        {"", ""},
        {"<a>b</a>", "<a>b</a>"},
        {in_element("SmbHash", "AB12"), in_element("SmbHash", "REDACTED")},
        {in_element("SysHash", ""), in_element("SysHash", "REDACTED")},
        {in_element("SysHash", "]]>x]]</SysHash><"), in_element("SysHash", "REDACTED")},
        {"<SmbHash>AB</SmbHash><Password>x</Password>", "<SmbHash>REDACTED</SmbHash><Password>REDACTED</Password>"},
        {"<SmbHash>cut", "<SmbHash>REDACTED"},
        {"<SmbHash><![CDATA[cut", "<SmbHash><![CDATA[REDACTED"},
        {pair, "UkVEQUNURUQ6UkVEQUNURUQ="},
        {"value=\"" + pair + "\" x", "value=\"UkVEQUNURUQ6UkVEQUNURUQ=\" x"},
        {"protocol/transac MXLSchemaMXLSch=", "protocol/transac MXLSchemaMXLSch="},
        {in_element("User_Name", "zoe"), in_element("User_Name", "zoe")},
        {"bytes \xC3\xA9 \xC3 \xFF \xED\xA0\x80 \x01\x7F", "bytes \xC3\xA9 \xC3 \xFF \xED\xA0\x80 \x01\x7F"},
    };
    for (const auto& [text, shown] : cases) {
        EXPECT_EQ(written(text), shown);
        EXPECT_EQ(written(shown), shown) << "a stand-in stays";
    }
}

TEST(Secrets, ArePairsWhereverTheyStand)
{
    const std::string pairs[] = {"NEUzOiQxJGEkYg==", "NEUzOiQxJGEkYmM=", "NEUzOiQxJGEkYmNk", "OjpAOjo/Ojp+Ojo9",
        "OjpaOjpzOjp0OjpZ"}; // digits at the edges of their ranges, too
    const std::string no_pairs[] = {"NEUzOiQxJGEk", "NEUzOiQxJGEkYg=", "MTIzNDU2Nzg5MDEyMzQ1", "NEUzOiQxJGEkYmN"};
    for (std::size_t distance = 0; distance < 17; ++distance) {
        for (const char* edge : {".", " ", "=", "_", "<z>", "\xFF"}) {
            const std::string before = std::string(distance, distance % 2 == 0 ? '.' : ' ') + "word" + edge;
            const std::string behind = *edge == '=' ? "" : edge;
            for (const std::string& pair : pairs)
                EXPECT_EQ(written(before + pair + behind), before + PAIR_STAND_IN + behind);
            for (const std::string& no_pair : no_pairs)
                EXPECT_EQ(written(before + no_pair + behind), before + no_pair + behind);
        }
    }
    const std::string long_run(1000, 'A');
    EXPECT_EQ(written(long_run + '.' + pairs[0] + pairs[2]), long_run + '.' + PAIR_STAND_IN + PAIR_STAND_IN);
    EXPECT_EQ(written(pairs[2] + "<SmbHash>" + pairs[0]), std::string(PAIR_STAND_IN) + "<SmbHash>REDACTED");
    EXPECT_EQ(written(pairs[2] + "<SmbHash>"), std::string(PAIR_STAND_IN) + "<SmbHash>REDACTED");
}

/** Every byte at every place among eight, which are looked at together. */
TEST(Json, EveryByteIsWrittenAsItStandsForItself)
{
    const std::map<int, std::string> letters = {
        {'"', R"(\")"}, {'\\', R"(\\)"}, {'\t', R"(\t)"}, {'\r', R"(\r)"}, {'\n', R"(\n)"}};
    for (int byte = 0; byte < 0x100; ++byte) {
        char shown[8] = {static_cast<char>(byte)};
        if (byte < ' ' || byte >= 0x7F)
            std::snprintf(shown, sizeof shown, "\\u%04x", byte < 0x80 ? byte : 0xF700 + byte);
        const std::string expected = letters.count(byte) != 0 ? letters.at(byte) : shown;
        for (std::size_t before = 0; before < 10; ++before)
            for (const char* behind : {"", "!", "\\behind it, far enough"})
                EXPECT_EQ(as_json(std::string(before, '~') + static_cast<char>(byte) + behind),
                    std::string(before, '~') + expected + (*behind == '\\' ? "\\" : "") + behind)
                    << byte;
    }
    std::string quotes;
    for (int i = 0; i < 5000; ++i)
        quotes += R"(\")"; // more than room is made for at first
    EXPECT_EQ(as_json(std::string(5000, '"')), quotes);
    for (std::size_t before = 0; before < 10; ++before)
        EXPECT_EQ(as_json(std::string(before, ' ') + "\u00E9\U0001F600 far enough"),
            std::string(before, ' ') + "\u00E9\U0001F600 far enough");
}

TEST(Secrets, StandIsForThemInStatements)
{
    const Command command = {{"adduser", "zoe", "NEUzOiQxJGEkYg==", "zoe@example.com"}, "alice:secret", 3};
    const Redaction redaction(command);
    const std::pair<const char*, const char*> cases[] = {
        {"username=zoe, syshash=$1$a$b, smbhash=4E3, email=e",
            "username=zoe, syshash=REDACTED, smbhash=REDACTED, email=e"},
        {"ERROR [syscmd:AddUser] invalid hash value ab[cd]\n", "ERROR [syscmd:AddUser] invalid hash value REDACTED"},
        {"behind another's words: $1$a$b", "behind another's words: REDACTED"},
        {"request=<SmbHash>x</SmbHash>\n", "request=<SmbHash>REDACTED</SmbHash>\n"},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(redaction.text(text), shown);
    EXPECT_EQ(redaction.words(), (std::vector<std::string>{"adduser", "zoe", PAIR_STAND_IN, "zoe@example.com"}));
    EXPECT_EQ(redaction.login(), "alice");
    const Redaction no_pair({{"updateuser", "zoe", "bm8gcGFpcg==", "e", "p"}, {}, 3});
    EXPECT_EQ(no_pair.words()[2], NO_PAIR_STAND_IN) << "it fails as before";
    EXPECT_EQ(no_pair.login(), std::nullopt);
}

/** What g_compute_hmac_for_data makes of it: the reference. */
std::string digits(const std::string& key, const std::string& name)
{
    char* text = g_compute_hmac_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(key.data()), key.size(),
        reinterpret_cast<const guchar*>(name.data()), name.size());
    const std::string first(text, 10);
    g_free(text);
    return first;
}

/** A process of its own: a key stays. */
TEST(Pseudonyms, AreTheSameForTheSameName)
{
    for (const std::string& key : {std::string("k"), std::string(64, 'k'), std::string(200, 'k')}) {
        pseudonym_key(key.c_str());
        const std::string alice = "u-" + digits(key, "alice");
        const std::string address = alice + "@d-" + digits(key, "example.com");
        const std::pair<std::string, std::string> cases[] = {
            {in_element("User_Name", "alice"), in_element("User_Name", alice)},
            {in_element("Email_Address", "alice@example.com"), in_element("Email_Address", address)},
            {in_element("P2PUserName", ""), in_element("P2PUserName", "")},
            {in_element("P2PUserName", "(null)"), in_element("P2PUserName", "(null)")},
            {"Authorization: alice\r\n<a>alice</a>", "Authorization: " + alice + "\r\n<a>alice</a>"},
            {"<User_Name>alice</User_Name>\"/>", "<User_Name>" + alice + "</User_Name>\"/>"},
            {"<xs:value>alice@ value=\"</xs:value>bob\"",
                "<xs:value>" + alice + "@d-" + digits(key, " value=\"") + "</xs:value>bob\""},
            {"<User FullName=\"\" UserName=\"alice\"/>", "<User FullName=\"\" UserName=\"" + alice + "\"/>"},
            {"<xs:value>alice</xs:value>" + in_element("SmbHash", "x"),
                "<xs:value>" + alice + "</xs:value>" + in_element("SmbHash", "REDACTED")},
        };
        for (const auto& [text, shown] : cases)
            EXPECT_EQ(written(text), shown);
        const std::string request = "<User_Name>al</User_Name>" + in_element("xs:value", "alice@example.com");
        EXPECT_EQ(written(in_element("xs:error-details", "User alice@example.com also al, not alas"), request),
            in_element("xs:error-details", "User " + address + " also u-" + digits(key, "al") + ", not alas"));
        for (int round = 0; round < 2; ++round) { // worked out, then known or not any more
            for (std::size_t i = 0; i < 300; ++i) {
                const std::string name = std::to_string(i * i) + std::string(i % 90, 'n');
                EXPECT_EQ(written(in_element("User_Name", name)), in_element("User_Name", "u-" + digits(key, name)));
            }
        }
        Redaction redaction({{"deleteuser", "alice", "al"}, "alice:x", 3});
        redaction.learn({{{"account", "1"}, {{"name", "bob"}, {"email", "alice@example.com"}, {"p2p_user_name", ""}}}});
        EXPECT_EQ(
            redaction.text("alice alice@example.com, bob!"), alice + ' ' + address + ", u-" + digits(key, "bob") + '!');
        EXPECT_EQ(redaction.login(), alice);
    }
}

TEST(LogFile, StatementsAreToldApart)
{
    const auto statements = statements_in("before\nNov 24 2026 16:13:12 INFO:a.cpp:7 no end"
                                          "Nov  4 2026 16:13:12 ERROR:b.cpp:1375 one\ntwo\n");
    ASSERT_EQ(statements.size(), 2U);
    EXPECT_EQ(statements[0].text, "no end");
    EXPECT_EQ(statements[1].level + statements[1].unit + std::to_string(statements[1].line), "ERRORb.cpp1375");
    EXPECT_EQ(statements[1].text, "one\ntwo\n");
}

// ---- the reader -----------------------------------------------------------------------------------

constexpr const char* HEADER = R"({"format":"syscmd-recording","version":1,"names":"plain"})"
                               "\n";
constexpr const char* COMMAND =
    R"({"kind":"command","pid":7,"time":1.5,"words":["adduser","z"],"as":null,"log_level":3,"log_file":true})"
    "\n";
constexpr const char* CALL =
    R"({"kind":"call","pid":7,"n":1,"time":1.6,"us":5,"result":0,"errno":0,"request_length":1,)"
    R"("request":"r\uf7ff","reply_length":0,"reply":null})"
    "\n";
constexpr const char* ANSWER = R"({"kind":"answer","pid":7,"code":"CODE_FAILED","response":null,"us":12})"
                               "\n";

TEST(Reader, TellsCommandsApart)
{
    const std::string of_eight = [] {
        std::string text = CALL;
        return text.replace(text.find("\"pid\":7"), 7, "\"pid\":8");
    }();
    const std::string text = std::string(HEADER) +
                             R"({"kind":"state","pid":7,"facts":[{"what":"cloud owner","key":"","value":"alice"}]})"
                             "\n" +
                             COMMAND + of_eight + CALL + R"({"kind":"news","pid":7})" + '\n' + HEADER +
                             R"({"kind":"statement","pid":7,"level":"INFO","unit":"a.cpp","line":3,"text":"t"})"
                             "\n"
                             R"({"kind":"change","pid":7,"what":"cloud owner","key":"","from":"alice","to":null})"
                             "\n" +
                             ANSWER + COMMAND + ANSWER;
    const Recording recording = parse_recording(text, "file");
    expect_answers(recording, "file");
    ASSERT_EQ(recording.commands.size(), 3U);
    const auto& [first, other, second] = std::tie(recording.commands[0], recording.commands[1], recording.commands[2]);
    EXPECT_FALSE(recording.keyed);
    EXPECT_EQ(first.line, 3U);
    EXPECT_EQ(first.words, (std::vector<std::string>{"adduser", "z"}));
    EXPECT_EQ(first.calls.size(), 1U);
    EXPECT_EQ(first.calls[0].request, "r\xFF");
    EXPECT_EQ(first.calls[0].line, 5U);
    EXPECT_EQ(first.statements->at(0).unit, "a.cpp");
    EXPECT_EQ(for_people(first.changes.at(0)), std::vector<std::string>{"- cloud owner: alice"});
    EXPECT_EQ(first.answer->code, "CODE_FAILED");
    EXPECT_EQ(first.before->size(), 1U);
    EXPECT_TRUE(other.words.empty());
    EXPECT_EQ(other.pid, 8);
    EXPECT_EQ(second.before->size(), 0U) << "as the change has left it";
    EXPECT_TRUE(second.statements->empty());
}

TEST(Reader, DamagedFilesGetASentence)
{
    const std::string header = HEADER;
    const std::pair<std::string, std::string> cases[] = {
        {"", "f:1: the file is empty: expected a recording's header"},
        {"{}\n", "f:1: this is no recording: expected the header {\"format\":\"syscmd-recording\",\"version\":1,…}"},
        {"{\"format\":\"x\"}\n", "f:1: this is no recording: expected the header"},
        {"GIF89a\n", "f:1: expected a JSON object, whole and alone in its line"},
        {"{\"format\":\"syscmd-recording\",\"version\":2}\n",
            "f:1: the recording's version is 2: expected 1, the newest"},
        {header + header.substr(0, 20), "f:2: the recording is cut: expected the line to have an end"},
        {header + CALL + "{\"kind\":\"ca{}\n", "f:3: expected a JSON object, whole"},
        {header + "{\"kind\":1}\n", "f:2: expected \"kind\" to be a text"},
        {header + "{\"kind\":\"call\"}\n", "f:2: expected \"pid\" to be a number"},
        {header + "{\"kind\":\"call\",\"pid\":1,\"time\":\"x\"}\n", "f:2: expected \"time\" to be a number"},
        {header + ANSWER, "f:2: expected a line of the kind command by this process in front of it"},
        {header + CALL + ANSWER, "f:3: expected a line of the kind command by this process"},
        {header + "{\"kind\":\"state\",\"pid\":1,\"facts\":[{\"what\":1}]}\n",
            "f:2: expected \"what\" of a fact to be a text"},
        {header + COMMAND + CALL, "f:2: the recording is cut: expected an answer to adduser of process 7"},
    };
    for (const auto& [text, sentence] : cases) {
        try {
            expect_answers(parse_recording(text, "f"), "f");
            ADD_FAILURE() << "accepted: " << text;
        } catch (const BadRecording& bad) {
            EXPECT_EQ(std::string(bad.what()).substr(0, sentence.size()), sentence);
        }
    }
}

} // namespace
