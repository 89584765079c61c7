#pragma once

// The version of the headers a client is compiled with. The build reads the project version from
// here, so that find_package and these macros never differ.
#define KZM_VERSION_MAJOR 0
#define KZM_VERSION_MINOR 1
#define KZM_VERSION_PATCH 0

// One number to compare: #if KZM_VERSION >= KZM_MAKE_VERSION(1, 2, 0).
#define KZM_MAKE_VERSION(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))
#define KZM_VERSION KZM_MAKE_VERSION(KZM_VERSION_MAJOR, KZM_VERSION_MINOR, KZM_VERSION_PATCH)
