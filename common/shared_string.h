/**
 * Takes the members of std::string from the C++ library. C++20 makes them constexpr, and the
 * library's header then no longer says that it holds them, so that every unit would bring its own
 * copies. A build for size includes this first in every unit.
 */
#pragma once

#include <string>

extern template class std::basic_string<char>;
