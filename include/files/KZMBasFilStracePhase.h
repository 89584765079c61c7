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

    // Begins the phase; the destructor ends it. The name is copied.
    explicit KZMBasFilStracePhase(const char* name);
    KZMBasFilStracePhase(const KZMBasFilStracePhase&) = delete;
    KZMBasFilStracePhase& operator=(const KZMBasFilStracePhase&) = delete;
    ~KZMBasFilStracePhase();

    // The names of the open phases from the outermost on, with slashes between; "" outside.
    static std::string Path();
};

// The open phases of the process, outermost first. Clients make phases instead.
class KZM_API KZMBasFilStracePhase::Impl : public KZMBasAtiGlobalSingleton<Impl> {
public:
    // One a process.
    Impl();
    ~Impl();

    // Called by the phases; Path is that of the class around this one.
    void Begin(const char* name);
    void End();
    std::string Path() const;

private:
    struct Phase;
    Phase* m_innermost;  // owned, each owns the one around it
};
KZM_DECLARE_GLOBAL_SINGLETON(KZMBasFilStracePhase::Impl)
