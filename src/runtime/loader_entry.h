#pragma once

// What loading and unloading the library does. A failure to start is swallowed, since the loader
// could only end the process without a word; the client's own start then reports it.
void kzm_LibraryLoaded() noexcept;
// `processEnds`: it may be that other threads are at work still, or were ended anywhere in it.
void kzm_LibraryUnloaded(bool processEnds) noexcept;

bool kzm_ProcessEnds();  // for what is stopped then
