#include <dll/client.h>
#include <errors/KZMBasUtlExceptionModel.h>
#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlSystemErrorException.h>
#include <gtest/gtest.h>

#include <memory>

// A program and a second client library work on one KZMBasShared.
namespace {

// Of 63 the library has the pool only; each client makes the allocation functions itself.
class TwoClients : public testing::Test {
protected:
    TwoClients() {
        KZMBasSrmAllocator<7>::SetPool(&pool);
        KZMBasSrmAllocator<63>::SetPool(&pool);
    }
    ~TwoClients() override {
        KZMBasSrmAllocator<7>::Finalize();
        KZMBasSrmAllocator<63>::Finalize();
    }
    KZMBasCamPool pool{"test"};
};

TEST_F(TwoClients, SeeTheSameSingletonsAndPools) {
    EXPECT_EQ(client::There(), client::Here());
    omi_SingletonBase<KZMBasUtlVersion>::Finalize();  // ours was theirs: a fresh one is shared too
    KZMBasSrmAllocator<7>::SetPool(nullptr);
    EXPECT_TRUE(client::There() == client::Here() && !client::There()[3]);
}

TEST_F(TwoClients, FreeAndEnlargeWhatTheOtherAllocated) {
    void* const mine = KZMBasSrmAllocator<63>::allocate(100);
    void* const theirs = client::Allocate63(28);
    EXPECT_EQ(pool.BytesInUse(), 128u);
    client::Deallocate63(mine);
    KZMBasSrmAllocator<63>::deallocate(theirs);
    EXPECT_EQ(pool.BytesInUse(), 0u);
    std::unique_ptr<client::Table> table(client::NewTable(-5, 50));
    EXPECT_GT(pool.Blocks(), 0u);
    table->Insert(7, 70);
    EXPECT_EQ(table->ConstGet(-5) + table->ConstGet(7), 120);
    table.reset();
    EXPECT_EQ(pool.Blocks(), 0u);
}

TEST(Exceptions, KeepTheirClassOnTheWayThroughAClient) {
    EXPECT_THROW(client::ThrowReadError(2), KZMBasUtlReadError);
    EXPECT_THROW(client::ThrowOwn(), ClientError);
    EXPECT_THROW(client::Call([] { throw ClientError(); }), ClientError);
    const auto raise = [] {
        KZMBasUtlExceptionModel::throwSystemErrorException(
            cow_SystemErrorCode(omi_SystemErrorCode::CLibraryError, 2));
    };
    EXPECT_THROW(client::Call(raise), KZMBasUtlSystemErrorException);
}

}  // namespace
