/** Marks what the shared library offers; everything else is compiled with hidden visibility. */
#pragma once

#define EXPORTED __attribute__((visibility("default")))
