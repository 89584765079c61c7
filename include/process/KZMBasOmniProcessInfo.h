#pragma once
#include <kzm_export.h>

// Who this process is: its identifier, its rank in a parallel run, its executable and environment.
// Everything is static and belongs to the whole process. Call Initialize while one thread is
// active; afterwards any thread may read, if somebody has asked for the executable before.
//
// Texts are in the encoding of the process's narrow texts (on Windows the current code page). Paths
// are in host form, with backslashes, on every system: "Z:\usr\bin\solver" on Linux.
class KZM_API KZMBasOmniProcessInfo {
public:
    KZMBasOmniProcessInfo();  // determines the executable, if that is not done yet

    // Asks the system for everything again. A rank that the environment does not tell stays.
    static void Initialize();

    static void Finalize();  // forgets everything, as before Initialize

    static int ProcessId();  // 0 before Initialize

    // The number in MPI_RANKID, or without it in PMI_RANK, when Initialize ran; 0 if neither was
    // set, or if the text is no number.
    static int Rank();

    static int ThreadId();  // of the calling thread, asked of the system on each call

    // The executable's whole path, cut at 1023 bytes, and its name without directory, cut at 255
    // bytes and before the first ".exe". Determined by the first call if need be. Empty if the
    // system does not tell; they last until Initialize or Finalize.
    static const char* ExePath();
    static const char* ExeName();

    // Appends to a text file: a line with the path of the executable, then each variable of the
    // environment as NAME=value, in the system's order. The name is a path in host form. Null, and
    // a file that cannot be opened, do nothing. No other thread may change the environment.
    static void SaveEnvironment(const char* fileName);

    // Copy into a buffer of `size` bytes what fits, always with a zero byte at the end, and return
    // the buffer; without room nothing is written. The first argument is not used.
    static char* ProcessName(int, char* buffer, int size);       // ExeName
    static char* ProcessNameFull(int, char* buffer, int size);   // ExePath
    static char* ProcessNameShort(int, char* buffer, int size);  // ExeName

private:
    static void DetermineRank();
    static void DetermineExeName();
};
