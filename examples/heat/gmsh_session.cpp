#include "gmsh_session.h"

#include <fcntl.h>
#include <gmsh.h>
#include <unistd.h>

#include <cstdio>

namespace heat {
namespace {

// The descriptor's former target, -1 where it was closed.
int Redirect(int descriptor) {
    const int kept = dup(descriptor);
    const int sink = open("/dev/null", O_WRONLY);
    if (sink >= 0) {
        dup2(sink, descriptor);
        close(sink);
    }
    return kept;
}

void Restore(int kept, int descriptor) {
    if (kept < 0) return;
    dup2(kept, descriptor);
    close(kept);
}

}  // namespace

Silence::Silence() {
    std::fflush(stdout);
    std::fflush(stderr);
    m_output = Redirect(STDOUT_FILENO);
    m_error = Redirect(STDERR_FILENO);
}

Silence::~Silence() {
    std::fflush(stdout);
    std::fflush(stderr);
    Restore(m_output, STDOUT_FILENO);
    Restore(m_error, STDERR_FILENO);
}

GmshSession::GmshSession() {
    gmsh::initialize(0, nullptr, false);
    gmsh::option::setNumber("General.Terminal", 0);
    gmsh::option::setNumber("Mesh.Renumber", 0);
}

GmshSession::~GmshSession() { gmsh::finalize(); }

}  // namespace heat
