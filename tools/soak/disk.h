/** The device's disk, which is one file system in memory: full for a while. */
#pragma once

#include <string>

class Disk {
  public:
    /** Leaves no room but in what is written already; false where that cannot be had. */
    bool fill();
    void free();
    bool is_full() const { return full_; }

  private:
    bool full_ = false;
};
