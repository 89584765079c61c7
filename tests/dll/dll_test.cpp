#include <dll/client.h>
#include <errors/KZMBasUtlExceptionModel.h>
#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlSystemErrorException.h>
#include <errors/KZMBasUtlVersion.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <runtime/rgx_ReCompileCache.h>

#include <memory>
#include <new>

// A program and a second client library work on one KZMBasShared.
namespace {

TEST(TwoClients, SeeTheSameSingletons) {
    const client::View other = client::Look();
    EXPECT_EQ(other.version, &omi_Singleton<KZMBasUtlVersion>::Instance());
    EXPECT_EQ(other.registry, &omi_Singleton<KZMBas_SingletonRegistry>::Instance());
    EXPECT_EQ(other.cache, &KZMBasAtiGlobalSingleton<rgx_ReCompileCache>::Instance());
    omi_SingletonBase<KZMBasUtlVersion>::Finalize();  // ours was theirs: a fresh one is shared too
    EXPECT_EQ(client::Look().version, &omi_Singleton<KZMBasUtlVersion>::Instance());
}

TEST(TwoClients, SetEachOthersPools) {
    KZMBasCamPool pool("test");
    KZMBasSrmAllocator<7>::SetPool(&pool);
    EXPECT_EQ(client::Look().pool7, &pool);
    KZMBasSrmAllocator<7>::Finalize();
    EXPECT_EQ(client::Look().pool7, nullptr);
}

// Of 63 and 64 the library has the pool only; each client makes the allocation functions itself.
TEST(TwoClients, AllocateFromOnePoolThroughFunctionsOfTheirOwn) {
    KZMBasCamPool pool("test");
    client::SetPool63(&pool);
    void* const mine = KZMBasSrmAllocator<63>::allocate(100);
    void* const theirs = client::Allocate63(28);
    EXPECT_EQ(pool.BytesInUse(), 128u);
    client::Deallocate63(mine);
    KZMBasSrmAllocator<63>::deallocate(theirs);
    EXPECT_EQ(pool.BytesInUse(), 0u);
    client::SetPool63(nullptr);
    EXPECT_EQ(KZMBasSrmAllocator<63>::GetPool(), nullptr);
}

TEST(TwoClients, ShareTextUntilOneWrites) {
    cow_String mine("a text of some length");
    host_heap::Watch();
    client::Keep(mine);
    EXPECT_EQ(client::Kept().CStr(), mine.CStr());
    mine.Append("!");
    EXPECT_STREQ(client::Kept().CStr(), "a text of some length");
    EXPECT_STREQ(mine.CStr(), "a text of some length!");
    client::Keep(cow_String());
    host_heap::Unwatch();
}

TEST(TwoClients, HandTablesOver) {
    KZMBasCamPool pool("test");
    KZMBasSrmAllocator<7>::SetPool(&pool);
    {
        const std::unique_ptr<omi_IntTable<int, KZMBasSrmAllocator<7>>> table(
            client::NewTable(-5, 50));
        EXPECT_GT(pool.Blocks(), 0u);
        table->Insert(7, 70);
        EXPECT_EQ(table->ConstGet(-5) + table->ConstGet(7), 120);
    }
    EXPECT_EQ(pool.Blocks(), 0u);
    KZMBasSrmAllocator<7>::SetPool(nullptr);
}

TEST(Exceptions, OfTheLibraryKeepTheirClassOnTheWayThroughAClient) {
    try {
        client::ThrowReadError(2);
        FAIL();
    } catch (const KZMBasUtlReadError& error) {
        EXPECT_EQ(error.GetCode(), 303);
        EXPECT_STREQ(error.ThrownFile(), "client");
    }
    const auto raise = [] {
        KZMBasUtlExceptionModel::throwSystemErrorException(
            cow_SystemErrorCode(omi_SystemErrorCode::CLibraryError, 2));
    };
    EXPECT_THROW(client::Call(+raise), KZMBasUtlSystemErrorException);
}

TEST(Exceptions, OfOneClientAreCaughtByAnother) {
    try {
        client::ThrowOwn();
        FAIL();
    } catch (const ClientError& error) {
        EXPECT_EQ(error.value, 17);
    }
    const auto raise = [] { throw ClientError(); };
    EXPECT_THROW(client::Call(+raise), ClientError);
}

TEST(Exceptions, ExhaustionLeavesTheLibraryAsBadAlloc) {
    host_heap::Watch(1);
    EXPECT_THROW(client::NewTable(1, 1), std::bad_alloc);
    EXPECT_EQ(host_heap::g_probe.live, 0);
    host_heap::Unwatch();
}

}  // namespace
