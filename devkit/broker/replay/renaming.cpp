#include "devkit/broker/replay/renaming.h"

#include "common/account_name.h"
#include "devkit/bwdrecord/pieces.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t SUFFIX = 4;
/** Of the old name, which is one that the account in whose way it is was to have. */
constexpr std::size_t LONGEST_KEPT = MAX_USERNAME_LENGTH - SUFFIX;
/** The requests that rename. */
constexpr char UPDATE[] = "<xs:set ";

/** The name without its random end; empty: it has none. */
std::string stem(const std::string& name)
{
    if (name.size() <= SUFFIX ||
        name.find_first_not_of("0123456789abcdef", name.size() - SUFFIX) != std::string::npos) {
        return "";
    }
    return name.substr(0, name.size() - SUFFIX);
}

std::vector<std::pair<PieceKind, std::string>> pieces(const std::string& text)
{
    std::vector<std::pair<PieceKind, std::string>> all;
    Pieces in = pieces_of(text.data(), text.size(), true);
    for (Piece piece; next_piece(&in, &piece);) {
        all.emplace_back(piece.kind, std::string(piece.at, piece.length));
    }
    return all;
}

} // namespace

Renaming::Renaming(bool keyed, std::vector<std::string> words)
    : keyed_(keyed), words_(std::move(words))
{
}

std::string Renaming::as_recorded(std::string text) const
{
    for (const auto& [made, recorded] : recorded_of_) {
        for (std::size_t at = 0; (at = text.find(made, at)) != std::string::npos;
             at += recorded.size()) {
            text.replace(at, made.size(), recorded);
        }
    }
    return text;
}

bool Renaming::is_made_up(const std::string& recorded, const std::string& made) const
{
    const std::string kept = stem(made);
    const bool of_a_word = std::any_of(words_.begin(), words_.end(), [&](const std::string& word) {
        return !kept.empty() && word.substr(0, LONGEST_KEPT) == kept;
    });
    return of_a_word && (keyed_ ? recorded.starts_with("u-") : stem(recorded) == kept);
}

bool Renaming::matches(const std::string& recorded, const std::string& made)
{
    const auto expected = pieces(recorded);
    const auto found = pieces(as_recorded(made));
    std::map<std::string, std::string> made_up;
    if (expected.size() != found.size()) {
        return false;
    }
    const bool renames = recorded.find(UPDATE) != std::string::npos;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (expected[i] == found[i]) {
            continue;
        }
        if (!renames || expected[i].first != PieceKind::Name || found[i].first != PieceKind::Name ||
            !is_made_up(expected[i].second, found[i].second)) {
            return false;
        }
        made_up[found[i].second] = expected[i].second;
    }
    recorded_of_.merge(made_up);
    return true;
}
