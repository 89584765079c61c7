#pragma once
#include <kzm_export.h>

// Lets a test see each Add (added true) and Remove of the registry, in order, known names or not;
// null ends it. Called before the change takes place. Not installed.
using omi_SingletonRegistryObserver = void (*)(bool added, const char* name);
KZM_API void omi_SetSingletonRegistryObserver(omi_SingletonRegistryObserver observer);
