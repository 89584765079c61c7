#pragma once
#include <coreutils/atr_String.h>

// The name that newer classes use for the core utilities' string.
using KZMString = atr_String;
