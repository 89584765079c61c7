#include <errors/KZMBasUtlVersion.h>

KZM_DEFINE_SINGLETON(KZMBasUtlVersion)

#define KZM_TEXT_OF(number) #number
#define KZM_VERSION_TEXT(major, minor, patch) \
    KZM_TEXT_OF(major) "." KZM_TEXT_OF(minor) "." KZM_TEXT_OF(patch)

KZMBasUtlVersion::KZMBasUtlVersion() {}
KZMBasUtlVersion::~KZMBasUtlVersion() {}

void KZMBasUtlVersion::InitReleaseInfo() {}
void KZMBasUtlVersion::InitBuildInfo() {}

int KZMBasUtlVersion::Major() const { return KZM_VERSION_MAJOR; }
int KZMBasUtlVersion::Minor() const { return KZM_VERSION_MINOR; }
int KZMBasUtlVersion::Patch() const { return KZM_VERSION_PATCH; }
int KZMBasUtlVersion::Number() const { return KZM_VERSION; }

const char* KZMBasUtlVersion::Text() const {
    return KZM_VERSION_TEXT(KZM_VERSION_MAJOR, KZM_VERSION_MINOR, KZM_VERSION_PATCH);
}

bool KZMBasUtlVersion::Serves(int headers) const {
    const int series = KZM_VERSION_MAJOR > 0 ? 1000000 : 1000;  // how much of the number must agree
    return headers >= 0 && headers / series == KZM_VERSION / series && headers <= KZM_VERSION;
}
