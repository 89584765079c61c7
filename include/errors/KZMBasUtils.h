#pragma once
#include <kzm_export.h>

// Counted start and stop of the exception model, part of KZMBasShared_initialize and _finalize:
// the first start installs KZMBasUtlExcDefaultFactory, the matching last stop removes the factory
// and ends, in this order, the singletons KZMBasUtlVersion, KZMBasUtlExcModelSingleton,
// bcu_ResourceMonitor, KZMBasUtlIOStats and KZMBas_SingletonRegistry. Each adds to or subtracts
// from the caller's tally once. A start that runs out of memory counts as none.
KZM_API void KZMBasUtils_initialize(int& count);
KZM_API void KZMBasUtils_finalize(int& count);
