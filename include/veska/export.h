/// The export macro of the public classes and functions.
#pragma once

#if defined(_WIN32) && defined(VESKA_SHARED)
#ifdef VESKA_BUILDING
#define VESKA_API __declspec(dllexport)
#else
#define VESKA_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define VESKA_API __attribute__((visibility("default")))
#else
#define VESKA_API
#endif
