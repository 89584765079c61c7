#pragma once
#include <kzm_export.h>
#include <kzm_version.h>
#include <runtime/omi_Singleton.h>

// The version of the library that is loaded, which may differ from that of the headers a client was
// compiled with (KZM_VERSION):
//
//     if (!omi_Singleton<KZMBasUtlVersion>::Instance().Serves()) ...
class KZM_API KZMBasUtlVersion : public omi_SingletonBase<KZMBasUtlVersion> {
public:
    // Made by the first Instance().
    KZMBasUtlVersion();
    ~KZMBasUtlVersion();

    // Called when the process information is initialised. Nothing to do: the numbers below are
    // compiled in.
    static void InitReleaseInfo();
    static void InitBuildInfo();

    // The three numbers of the version, of which a new major one may break clients, a new minor one
    // only while the major one is 0.
    int Major() const;
    int Minor() const;
    int Patch() const;

    int Number() const;        // comparable, as KZM_VERSION
    const char* Text() const;  // "1.2.3"

    // Whether code compiled with headers of that version may use this library: the same major
    // version (and minor version, while the major one is 0), and not newer than the library.
    bool Serves(int headers = KZM_VERSION) const;
};
KZM_DECLARE_SINGLETON(KZMBasUtlVersion)
