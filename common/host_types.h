// Types of the values that pass between plug-in and host inside containers. On Windows, where the two come
// from different compilers, they have the host's layout and use the host's heap; elsewhere they are the
// standard ones.
#pragma once

#include <string>
#include <vector>

#ifdef _WIN32
#include "common/host_heap.h"
#include "common/host_string.h"
#endif

namespace zrml {

#ifdef _WIN32
template <class T>
using HostVector = std::vector<T, HostAllocator<T>>;
using HostString = BasicHostString<wchar_t>;
#else
template <class T>
using HostVector = std::vector<T>;
using HostString = std::wstring;
#endif

static_assert(sizeof(HostVector<double>) == 24);
static_assert(sizeof(HostString) == 32);

}  // namespace zrml
