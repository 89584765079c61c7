#include <errors/KZMBasUtils.h>
#include <errors/KZMBasUtlExcDefaultFactory.h>
#include <errors/KZMBasUtlExcModelSingleton.h>
#include <errors/KZMBasUtlExceptionModel.h>
#include <errors/KZMBasUtlVersion.h>
#include <files/KZMBasUtlIOStats.h>
#include <process/bcu_ResourceMonitor.h>
#include <runtime/KZMBas_SingletonRegistry.h>

#include <memory>
#include <new>

namespace {
constinit unsigned g_starts = 0;
}

void KZMBasUtils_initialize(int& count) {
    if (g_starts == 0) {
        auto factory = std::make_unique<KZMBasUtlExcDefaultFactory>();
        KZMBasUtlExceptionModel::setBehavior(factory.get());
        static_cast<void>(factory.release());  // the model owns it
        ++count;
    }
    ++g_starts;
}

void KZMBasUtils_finalize(int& count) {
    if (g_starts-- != 1) return;
    --count;
    omi_SingletonBase<KZMBasUtlVersion>::Finalize();
    try {
        KZMBasUtlExceptionModel::setBehavior(nullptr);
    } catch (const std::bad_alloc&) {  // there was no model to begin with, so no factory either
    }
    omi_SingletonBase<KZMBasUtlExcModelSingleton>::Finalize();
    omi_SingletonBase<bcu_ResourceMonitor>::Finalize();
    omi_SingletonBase<KZMBasUtlIOStats>::Finalize();
    omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize();
}
