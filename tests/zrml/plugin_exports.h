// Exports a function from the stand-in plug-ins.
#pragma once

#ifdef _WIN32
#define ZRML_EXPORT extern "C" __declspec(dllexport)
#else
#define ZRML_EXPORT extern "C" __attribute__((visibility("default")))
#endif
