#pragma once

// On Windows what a DLL exports is said by its module-definition file; see docs/architecture.md.
#ifdef _WIN32
#define KZM_API
#else
#define KZM_API __attribute__((visibility("default")))
#endif
#define KZM_DECLARE(...) extern template class KZM_API __VA_ARGS__;
#define KZM_DEFINE(...) template class __VA_ARGS__;
