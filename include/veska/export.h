/// What compilers say differently: how a library exports, and that a member may share its room.
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

#ifdef _MSC_VER
#define VESKA_NO_UNIQUE_ADDRESS [[msvc::no_unique_address]]
#else
#define VESKA_NO_UNIQUE_ADDRESS [[no_unique_address]]
#endif
