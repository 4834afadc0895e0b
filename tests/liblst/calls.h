/** Calls of the C library as the units make them: while a function stands here, it is called instead. */
#pragma once

#include <dirent.h>
#include <poll.h>
#include <sys/types.h>

#include <cstddef>
#include <functional>

extern std::function<ssize_t(int, void*, std::size_t)> on_read;
extern std::function<dirent64*(DIR*)> on_readdir64;
extern std::function<void*(void*, std::size_t)> on_realloc;
extern std::function<const unsigned short**()> on_ctype_b_loc;
extern std::function<long(int)> on_sysconf;
extern std::function<int(pollfd*, nfds_t, int)> on_poll;

extern "C" ssize_t __real_read(int fd, void* to, std::size_t size);
extern "C" void* __real_realloc(void* old, std::size_t size);

/** Puts a function into one of these places, for as long as this lives. */
template<typename Function> struct Instead {
    template<typename Body> Instead(Function& of, Body body) : place(of) { place = body; }
    Instead(const Instead&) = delete;
    ~Instead() { place = nullptr; }

    Function& place;
};
