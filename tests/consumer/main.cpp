#include <cow/cow_String.h>
#include <errors/KZMBasUtlVersion.h>
#include <generics/KZMBasGenericsLib.h>
#include <kzm_version.h>
#include <omi/omi_UintTableIterator.h>
#include <runtime/KZMBasShared.h>
#include <runtime/KZMBasSrmAllocator.h>

#include <cstdio>

int main() {
    int running = 0;
    KZMBasShared_initialize(running);
    omi_UintTable<int, KZMBasSrmAllocator<5>> table;
    for (unsigned key : {30u, 4000000000u, 7u}) table.Insert(key, static_cast<int>(key % 10));
    cow_String text;
    omi_UintTableIterator<int, KZMBasSrmAllocator<5>> it(table);
    for (it.First(); !it.IsDone(); it.Next()) text.Append(cow_String(it.CurrentValue()));
    const bool sameVersion =
        omi_Singleton<KZMBasUtlVersion>::Instance().Major() == KZM_VERSION_MAJOR;
    std::printf("%s %s\n", text.CStr(), sameVersion ? "same version" : "other version");
    KZMBasShared_finalize(running);
    return running;
}
