// How the stand-in plug-ins export a function.
#pragma once

#ifdef _WIN32
#define ZRML_EXPORT extern "C" __declspec(dllexport)
#else
#define ZRML_EXPORT extern "C" __attribute__((visibility("default")))
#endif
