/** Where the processor time of a request goes. */
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <iterator>

enum class Stage {
    Request,  // read and taken apart
    Database, // orders and state
    Files,    // passwd and group
    Reply,    // put together
};
constexpr const char* STAGES[] = {"request", "database", "files", "reply"};

using StageTimes = std::array<std::chrono::nanoseconds, std::size(STAGES)>;

/** Until its scope ends the time is the stage's, but for what one within it takes. */
class Timed {
  public:
    explicit Timed(Stage stage);
    Timed(const Timed&) = delete;
    Timed& operator=(const Timed&) = delete;
    ~Timed();

  private:
    std::size_t outer_;
};

/** The times of the process since it was last asked. */
StageTimes take_stage_times();
