#pragma once

namespace heat {

// While it lives nothing reaches standard output and standard error: the geometry kernel below Gmsh
// writes its complaints there, and the job reports errors in words of its own.
class Silence {
public:
    Silence();
    ~Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int m_output;
    int m_error;
};

// Gmsh between its initialize and finalize: silent, without the user's configuration files, one
// model. One at a time.
class GmshSession {
public:
    GmshSession();
    ~GmshSession();
    GmshSession(const GmshSession&) = delete;
    GmshSession& operator=(const GmshSession&) = delete;

private:
    Silence m_silence;
};

}  // namespace heat
