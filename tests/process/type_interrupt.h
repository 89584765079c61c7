#pragma once

// Gives the process a console of its own, so that nobody else is interrupted, and types Ctrl-C.
bool TypeInterrupt();
