// Types of the values that cross between the plug-in and its host inside containers.
#pragma once

#include <string>
#include <vector>

namespace zrml {

template <class T>
using HostVector = std::vector<T>;

using HostString = std::wstring;

}  // namespace zrml
