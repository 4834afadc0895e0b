#include "devkit/broker/record/redaction.h"

#include "devkit/bwdrecord/pieces.h"
#include "devkit/bwdrecord/pseudonym.h"

#include <glib.h>

#include <algorithm>
#include <memory>

using nlohmann::json;

namespace {

constexpr std::size_t SHORTEST_SECRET = 4;

/** What the parameters of an operation are: names, a pair of hashes, or anything else. */
constexpr struct {
    const char* operation;
    const char* parameters;
} OPERATIONS[] = {
    {"adduser", "npn"},     {"addremoteuser", "n"},      {"deleteuser", "nn"},
    {"updateuser", "npnn"}, {"upgradeusertosso", "nnp"}, {"initlocalsession", "nn."},
};

char kind_of(const std::string& operation, std::size_t parameter)
{
    for (const auto& known : OPERATIONS) {
        const std::string kinds = known.parameters;
        if (operation == known.operation && parameter < kinds.size()) {
            return kinds[parameter];
        }
    }
    return '.';
}

std::string decoded(const std::string& base64)
{
    gsize length = 0;
    const std::unique_ptr<guchar, decltype(&g_free)> bytes(
        g_base64_decode(base64.c_str(), &length), g_free
    );
    return {reinterpret_cast<const char*>(bytes.get()), length};
}

std::string stand_in_for_pair(const std::string& parameter)
{
    if (parameter.empty()) {
        return "";
    }
    return decoded(parameter).find(':') != std::string::npos ? PAIR_STAND_IN : NO_PAIR_STAND_IN;
}

std::string pseudonym(const std::string& name)
{
    if (!pseudonyms_wanted() || name.empty() || name == "(null)") {
        return name;
    }
    char text[PSEUDONYM_SIZE];
    pseudonym_of(text, name.data(), name.size());
    return text;
}

bool is_word(const std::string& text, std::size_t at)
{
    return at < text.size() &&
           (g_ascii_isalnum(text[at]) != FALSE || static_cast<unsigned char>(text[at]) >= 0x80);
}

void replace_all(std::string& text, const std::string& what, const std::string& by, bool words)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos;) {
        if (words && (is_word(text, at + what.size()) || (at > 0 && is_word(text, at - 1)))) {
            ++at;
            continue;
        }
        text.replace(at, what.size(), by);
        at += by.size();
    }
}

/** In the element of an owner file, or the attribute of an event, behind `mark` up to `end`. */
void replace_behind(std::string& text, const std::string& mark, char end)
{
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) {
        at += mark.size();
        const std::size_t length = std::min(text.find(end, at), text.size()) - at;
        const std::string by = pseudonym(text.substr(at, length));
        text.replace(at, length, by);
        at += by.size();
    }
}

void replace_member(json& object, const char* name)
{
    if (object.contains(name)) {
        object[name] = pseudonym(object[name].get<std::string>());
    }
}

json account(json value)
{
    for (const char* name : {"smb_hash", "sys_hash"}) {
        if (value.contains(name) && value[name] != "") {
            value[name] = SECRET_STAND_IN;
        }
    }
    for (const char* name : {"name", "email", "p2p_user_name"}) {
        replace_member(value, name);
    }
    return value;
}

json value_of(const std::string& what, const std::string& key, json value)
{
    if (value.is_null()) {
        return value;
    }
    if (what == "account") {
        return account(value);
    }
    if (what == "session") {
        replace_member(value, "user");
    } else if (what == "remote user" || what == "cloud owner") {
        value = pseudonym(value.get<std::string>());
    } else if (what == "passwd" || what == "owner file") {
        auto text = value.get<std::string>();
        if (what == "passwd") {
            replace_all(text, "/home/" + key, "/home/" + pseudonym(key), true);
        }
        replace_behind(text, "<owner>", '<');
        replace_behind(text, "<p2powner>", '<');
        value = text;
    } else if (what == "event") {
        for (json& argument : value) {
            auto text = argument.get<std::string>();
            replace_behind(text, "user=\"", '"');
            argument = text;
        }
    }
    return value;
}

/** What stands around a hash in the statements that tell one; the end "" is the text's. */
constexpr struct {
    const char* begin;
    const char* end;
} HASHES_IN_STATEMENTS[] = {
    {"smbhash=", ", "},
    {"syshash=", ", "},
    {"] invalid hash value ", ""},
};

void hide_between(std::string& text, const std::string& begin, const std::string& end)
{
    for (std::size_t at = 0; (at = text.find(begin, at)) != std::string::npos;) {
        at += begin.size();
        const std::size_t stop =
            end.empty() ? text.size() : std::min(text.find(end, at), text.size());
        text.replace(at, stop - at, SECRET_STAND_IN);
        at += sizeof SECRET_STAND_IN - 1;
    }
}

std::string key_of(const std::string& what, const std::string& key)
{
    return what == "remote user" || what == "passwd" || what == "session" ? pseudonym(key) : key;
}

} // namespace

std::string without_secrets(const std::string& text)
{
    std::string shown = text;
    for (const auto& [begin, end] : HASHES_IN_STATEMENTS) {
        hide_between(shown, begin, end);
    }
    std::string clean;
    Pieces pieces = pieces_of(shown.data(), shown.size(), false);
    for (Piece piece; next_piece(&pieces, &piece);) {
        if (piece.kind == PieceKind::Secret) {
            clean += SECRET_STAND_IN;
        } else if (piece.kind == PieceKind::Pair) {
            clean += PAIR_STAND_IN;
        } else {
            clean.append(piece.at, piece.length);
        }
    }
    return clean;
}

Redaction::Redaction(const Command& command) : command_(command)
{
    const std::string& operation = command.words.front();
    for (std::size_t i = 1; i < command.words.size(); ++i) {
        const std::string& word = command.words[i];
        const char kind = kind_of(operation, i - 1);
        if (kind == 'n') {
            names_.insert(word);
        } else if (kind == 'p') {
            const std::string pair = decoded(word);
            const std::size_t colon = pair.find(':');
            secrets_.push_back(word);
            secrets_.push_back(pair.substr(0, colon));
            secrets_.push_back(colon == std::string::npos ? "" : pair.substr(colon + 1));
        }
    }
    std::erase_if(secrets_, [](const std::string& one) { return one.size() < SHORTEST_SECRET; });
    const std::string credentials = command.credentials.value_or("");
    names_.insert(credentials.substr(0, credentials.find(':')));
}

void Redaction::learn(const Facts& facts)
{
    for (const auto& [name, value] : facts) {
        const auto& [what, key] = name;
        if (what == "account") {
            for (const char* member : {"name", "email", "p2p_user_name"}) {
                names_.insert(value.value(member, ""));
            }
        } else if (what == "remote user" || what == "session") {
            names_.insert(key);
        }
    }
}

std::vector<std::string> Redaction::words() const
{
    std::vector<std::string> words;
    for (const std::string& word : command_.words) {
        const char kind = words.empty() ? 'o' : kind_of(command_.words.front(), words.size() - 1);
        words.push_back(
            kind == 'n'   ? pseudonym(without_secrets(word))
            : kind == 'p' ? stand_in_for_pair(word)
                          : without_secrets(word)
        );
    }
    return words;
}

std::optional<std::string> Redaction::login() const
{
    const auto& credentials = command_.credentials;
    if (!credentials) {
        return std::nullopt;
    }
    return pseudonym(credentials->substr(0, credentials->find(':')));
}

std::string Redaction::text(const std::string& text) const
{
    std::string clean = without_secrets(text);
    for (const std::string& secret : secrets_) {
        replace_all(clean, secret, SECRET_STAND_IN, false);
    }
    if (pseudonyms_wanted()) {
        std::vector<std::string> names(names_.begin(), names_.end());
        std::sort(names.begin(), names.end(), [](const std::string& one, const std::string& other) {
            return one.size() > other.size(); // alice@example.com before alice
        });
        for (const std::string& name : names) {
            if (!name.empty()) {
                replace_all(clean, name, pseudonym(name), true);
            }
        }
    }
    return clean;
}

FactChange Redaction::change(const FactChange& change) const
{
    return {
        change.what, key_of(change.what, change.key),
        value_of(change.what, change.key, change.from),
        value_of(change.what, change.key, change.to)};
}
