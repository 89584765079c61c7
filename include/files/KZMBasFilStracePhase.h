#pragma once
#include <kzm_export.h>
#include <runtime/KZMBasAtiGlobalSingleton.h>

#include <string>

// Names a phase of the run for the file trace, for as long as the object lives:
//
//     const KZMBasFilStracePhase phase("read model");
//
// Phases nest and end in the reverse order. One thread at a time. All phases end before the library
// stops.
class KZM_API KZMBasFilStracePhase {
public:
    class Impl;  // the open phases of the process

    explicit KZMBasFilStracePhase(const char* name);
    KZMBasFilStracePhase(const KZMBasFilStracePhase&) = delete;
    KZMBasFilStracePhase& operator=(const KZMBasFilStracePhase&) = delete;
    ~KZMBasFilStracePhase();

    // The names of the open phases from the outermost on, with slashes between; "" outside.
    static std::string Path();
};

class KZM_API KZMBasFilStracePhase::Impl : public KZMBasAtiGlobalSingleton<Impl> {
public:
    Impl();
    ~Impl();

    void Begin(const char* name);
    void End();
    std::string Path() const;

private:
    struct Phase;
    Phase* m_innermost;  // owned, each owns the one around it
};
KZM_DECLARE_GLOBAL_SINGLETON(KZMBasFilStracePhase::Impl)
