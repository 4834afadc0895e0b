#include "devkit/boxwelld/section_file.h"

#include "devkit/boxwelld/account.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>

namespace {

constexpr std::string_view BEGIN_OF_ANY = "# boxwelld: its accounts"; // of before, too
constexpr std::string_view BEGIN =
    "# boxwelld: its accounts; a line with # in front has gone, or is room for one\n";
constexpr std::string_view END = "# boxwelld: end\n";
constexpr std::string_view FILLERS = "# \n";
constexpr std::size_t LEAST_ROOM = 1024;
constexpr std::size_t ROOM_LINE = 128; // readers take lines into buffers
constexpr std::size_t MOST_OF_LAST = 64;

/** Where in a text the section is; without one all are the text's end. */
struct Section {
    std::size_t begin;  // of its first line
    std::size_t body;   // behind that line
    std::size_t end;    // of the body
    std::size_t behind; // its last line
};

Section section_of(const std::string& path, const std::string& text)
{
    const std::size_t begin = text.find(BEGIN_OF_ANY);
    if (begin == std::string::npos) {
        return {text.size(), text.size(), text.size(), text.size()};
    }
    const std::size_t body = text.find('\n', begin) + 1; // none: 0
    const std::size_t end = text.find(END, body);
    if (body == 0 || end == std::string::npos) { // which lines are somebody else's, nobody knows
        throw Refusal(path + ": the line \"" + one_line(std::string(END)) + "\" is missing");
    }
    return {begin, body, end, end + END.size()};
}

/** The line that begins at `at`, with its end as far as it has one. */
std::string_view line_at(std::string_view text, std::size_t at)
{
    const std::size_t end = text.find('\n', at);
    return text.substr(at, end == std::string_view::npos ? end : end + 1 - at);
}

/** As much of a line as is compared. */
std::string_view end_of(std::string_view line)
{
    return line.substr(line.size() - std::min(line.size(), MOST_OF_LAST));
}

std::optional<std::int64_t> id_of(std::string_view line)
{
    const std::size_t field = line.find(':', line.find(':') + 1) + 1;
    std::int64_t id = 0;
    const auto [rest, error] = std::from_chars(line.data() + field, line.data() + line.size(), id);
    return error == std::errc() ? std::optional(id) : std::nullopt;
}

/** The names that the lines of a text begin with. */
void add_names(std::string_view text, std::set<std::string>& names)
{
    for (std::size_t at = 0; at < text.size(); at += line_at(text, at).size()) {
        const std::string_view line = line_at(text, at);
        names.emplace(line.substr(0, line.find(':')));
    }
}

std::string room_for(std::size_t bytes)
{
    std::string room;
    for (std::size_t size = 0; size < std::max(LEAST_ROOM, bytes / 4); size += ROOM_LINE) {
        room += '#' + std::string(ROOM_LINE - 2, ' ') + '\n';
    }
    return room;
}

std::string read_at(const Fd& file, const std::string& path, std::size_t at, std::size_t size)
{
    std::string text(size, '\0');
    const ssize_t got = pread(file.get(), text.data(), size, static_cast<off_t>(at));
    if (got < 0) {
        throw_errno(path);
    }
    text.resize(static_cast<std::size_t>(got));
    return text;
}

struct Removed {
    const std::string& path;
    ~Removed() { unlink(path.c_str()); }
};

bool same_moment(const timespec& one, const timespec& other)
{
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

struct stat status_of(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        throw_errno(path);
    }
    return status;
}

} // namespace

SectionFile::SectionFile(std::string path, std::string unfinished)
    : path_(std::move(path)), unfinished_(std::move(unfinished))
{
}

bool SectionFile::is_known() const
{
    const struct stat now = status_of(path_);
    return now.st_dev == left_.st_dev && now.st_ino == left_.st_ino &&
           now.st_size == left_.st_size && same_moment(now.st_mtim, left_.st_mtim) &&
           same_moment(now.st_ctim, left_.st_ctim);
}

void SectionFile::read()
{
    if (std::filesystem::exists(unfinished_)) {
        const Removed done{unfinished_};
        overwrite(open_file(path_, O_WRONLY), path_, read_text(unfinished_));
    }
    learn(read_text(path_));
}

bool SectionFile::set(std::int64_t id, const std::string& line)
{
    const auto old = lines_.find(id);
    if (old == lines_.end() && line.empty()) {
        return true;
    }
    const Fd file = open_file(path_, O_RDWR);
    std::optional<std::size_t> gone;
    if (old != lines_.end()) {
        gone = old->second.begin;
        const std::string present = read_at(file, path_, *gone, old->second.size);
        if (present == line) {
            return true;
        }
        if (present.starts_with('#') || id_of(present) != id) {
            return false;
        }
    }
    if (!line.empty() && !append(file, line)) {
        return false;
    }
    if (gone) {
        write_at(file, path_, "#", *gone);
        if (*gone + last_.size() >= room_) {
            last_[*gone + last_.size() - room_] = '#';
        }
    }
    if (line.empty()) {
        lines_.erase(id);
    } else {
        lines_[id] = {room_ - line.size(), line.size()};
    }
    left_ = status_of(path_);
    return true;
}

bool SectionFile::append(const Fd& file, const std::string& line)
{
    if (room_ + line.size() > end_) {
        return false;
    }
    const std::string place =
        read_at(file, path_, room_ - last_.size(), last_.size() + line.size() + 1);
    if (!place.starts_with(last_) ||
        place.find_first_not_of(FILLERS, last_.size()) != std::string::npos) {
        return false;
    }
    write_at(file, path_, '#' + line.substr(1) + '#', room_);
    write_at(file, path_, line.substr(0, 1), room_);
    room_ += line.size();
    last_ = end_of(line);
    return true;
}

void SectionFile::replace(const std::vector<std::string>& lines)
{
    const std::string before = read_text(path_);
    const Section section = section_of(path_, before);
    std::string text = before.substr(0, section.begin);
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    if (!lines.empty()) {
        text += BEGIN;
        const std::size_t body = text.size();
        for (const std::string& line : lines) {
            text += line;
        }
        text.append(room_for(text.size() - body)).append(END);
    }
    text.append(before, section.behind);
    if (text != before) {
        write(before, text);
    }
    learn(text);
}

/** Takes over what the file holds, and where. */
void SectionFile::learn(const std::string& text)
{
    left_ = status_of(path_);
    const Section section = section_of(path_, text);
    const std::string_view all = text;
    others_.clear();
    add_names(all.substr(0, section.begin), others_);
    add_names(all.substr(section.behind), others_);
    lines_.clear();
    room_ = section.body;
    std::size_t last = section.begin;
    for (std::size_t at = section.body; at < section.end;) {
        const std::string_view line = line_at(all, at);
        if (const auto id = line.front() == '#' ? std::nullopt : id_of(line)) {
            lines_[*id] = {at, line.size()};
        }
        at += line.size();
        if (line.find_first_not_of(FILLERS) != std::string::npos) {
            last = at - line.size();
            room_ = at;
        }
    }
    last_ = end_of(all.substr(last, room_ - last));
    end_ = section.end;
}

/** Gives the file another text, which ends as one of the two also where this fails. */
void SectionFile::write(const std::string& before, const std::string& text) const
{
    const Fd file = open_file(path_, O_WRONLY);
    const Removed done{unfinished_};
    const std::string unready = unfinished_ + ".new";
    {
        const Removed renamed{unready};
        overwrite(open_file(unready, O_WRONLY | O_CREAT | O_TRUNC), unready, text);
        if (rename(unready.c_str(), unfinished_.c_str()) != 0) {
            throw_errno(unfinished_);
        }
    }
    try {
        overwrite(file, path_, text);
    } catch (const std::exception&) { // a full disk; what was there fits
        overwrite(file, path_, before);
        throw;
    }
}
