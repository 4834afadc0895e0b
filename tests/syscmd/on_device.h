/** Routines called directly, on the private device; whatever they say is a statement of the table. */
#pragma once

#include "common/common.h"
#include "common/io.h"
#include "tests/syscmd/device.h"
#include "tests/syscmd/frozen_time.h"
#include "tests/syscmd/trace.h"

#include <gtest/gtest.h>

class OnDevice : public testing::Test {
  protected:
    void SetUp() override
    {
        MAX_LOG_LEVEL = 7;
        frozen_time = 0;
        resetDevice();
    }
    void TearDown() override { expectKnown(); }
};

/** A text that a routine handed over. */
struct Owned {
    char* text = nullptr;
    ~Owned() { free(text); }
    std::string read() const { return text == nullptr ? "(null)" : text; }
};
