#pragma once

// What loading and unloading the library does. A failure to start is swallowed, since the loader
// could only end the process without a word; the client's own start then reports it.
void kzm_LibraryLoaded() noexcept;
void kzm_LibraryUnloaded() noexcept;
