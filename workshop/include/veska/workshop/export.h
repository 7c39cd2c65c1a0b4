/// The export macro of the workshop's functions and classes.
#pragma once

#if defined(_WIN32) && defined(VESKA_WORKSHOP_SHARED)
#ifdef VESKA_WORKSHOP_BUILDING
#define VESKA_WORKSHOP_API __declspec(dllexport)
#else
#define VESKA_WORKSHOP_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define VESKA_WORKSHOP_API __attribute__((visibility("default")))
#else
#define VESKA_WORKSHOP_API
#endif
