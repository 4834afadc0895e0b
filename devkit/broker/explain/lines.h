/** The lines of a log that may go on growing. */
#pragma once

#include <string>

class Lines {
  public:
    /**
     * Opens a log.
     *
     * @param path    the file; "-" is standard input
     * @param follow  whether to go on at its end, as it grows, is renamed and made anew, or
     *                truncated; one that is not there is then waited for
     * @throws BadUse  when it cannot be read
     */
    Lines(std::string path, bool follow);
    ~Lines();
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    enum class Next {
        Line,
        Quiet, // no line for two seconds, of what may go on
        End,   // of the log, or by SIGINT or SIGTERM
    };

    /**
     * Waits for the next line, without its line end. A last line without one is given when no more
     * comes for a while.
     *
     * @throws BadUse  when reading fails
     */
    Next next(std::string& line);

  private:
    bool take_line(std::string& line);
    bool take_rest(std::string& line);
    bool fill();
    void open_file();
    void close_file();
    bool is_replaced() const;
    enum class Event {
        None,
        Input,
        Signal, // or the end of standard input
    };
    Event wait(int milliseconds) const;
    Event read_on();

    std::string path_;
    bool is_input_;
    bool follow_;
    int file_ = -1;
    int signals_ = -1;
    std::string buffer_;
    std::size_t taken_ = 0;   // bytes of the buffer
    std::size_t scanned_ = 0; // bytes of the buffer that hold no line end
    int pauses_ = 0;          // since the last bytes
    bool ended_ = false;
};
