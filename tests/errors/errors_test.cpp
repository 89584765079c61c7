#include <errors/KZMBasUtils.h>
#include <errors/KZMBasUtlExcDefaultFactory.h>
#include <errors/KZMBasUtlExcModelSingleton.h>
#include <errors/KZMBasUtlExceptionModel.h>
#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlShortRead.h>
#include <errors/KZMBasUtlShortWrite.h>
#include <errors/KZMBasUtlSystemError.h>
#include <errors/KZMBasUtlSystemErrorException.h>
#include <errors/KZMBasUtlVersion.h>
#include <errors/KZMBasUtlWriteError.h>
#include <support/memory_failure.h>

#include <cerrno>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

const KZMBasSystemError kNotFound(2);  // the same condition on both systems
const omi_SystemErrorCode::ErrorCodeType kNoType{2};

std::string Text(const KZMBasException& exception) {
    return exception.AsString(KZMBasStringModeUser).CStr();
}

struct Family {
    KZMBasUtlReadError readError{kNotFound};
    KZMBasUtlShortRead shortRead;
    KZMBasUtlSystemError systemError{"CreateFile", kNotFound};
    KZMBasUtlSystemErrorException systemException{
        cow_SystemErrorCode(omi_SystemErrorCode::SystemError, 2)};
    KZMBasUtlWriteError writeError{kNotFound};
    KZMBasUtlShortWrite shortWrite;

    std::vector<KZMBasException*> All() {
        return {&readError, &shortRead, &systemError, &systemException, &writeError, &shortWrite};
    }
};

TEST(Errors, EachClassHasItsCodeAndText) {
    const std::string notFound = kNotFound.AsString();
    const std::pair<int, std::string> expected[] = {
        {303, "Read Error: " + notFound},
        {304, "All the data requested could not be read."},
        {305, "System Error CreateFile: " + notFound},
        {306, "System Error: " + notFound},
        {307, "Write Error: " + notFound},
        {308, "All the data provided to write could not be written."}};
    Family family;
    const std::vector<KZMBasException*> all = family.All();
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i]->GetCode(), expected[i].first);
        EXPECT_EQ(Text(*all[i]), expected[i].second);
        EXPECT_EQ(all[i]->UserReport(KZMBasStringModeUser).CStr(), expected[i].second);
    }
}

TEST(Errors, TextsThatLookLikeFormatsAreTakenAsTheyStand) {
    const char* const name = "%n%s";
    const KZMBasUtlSystemError error(name, kNotFound);
    EXPECT_EQ(Text(error), std::string("System Error %n%s: ") + kNotFound.AsString());
    EXPECT_EQ(error.GetServiceName(), name);
    EXPECT_EQ(Text(KZMBasUtlSystemError(nullptr, kNotFound)),
              std::string("System Error : ") + kNotFound.AsString());
    EXPECT_EQ(Text(KZMBasUtlSystemErrorException(cow_SystemErrorCode(kNoType, -1))),
              "System Error: ");
}

template <class T>
void ExpectThrown(T& original) {
    SCOPED_TRACE(original.GetCode());
    KZMBasException& base = original;
    try {
        base.Throw("site.cpp", 12);
    } catch (const T& caught) {
        EXPECT_EQ(typeid(caught).name(), typeid(T).name());
        const std::unique_ptr<KZMBasException> clone(caught.Clone());
        EXPECT_NE(dynamic_cast<T*>(clone.get()), nullptr);
        EXPECT_EQ(Text(*clone), Text(original));
        EXPECT_STREQ(clone->ThrownFile(), "site.cpp");
        EXPECT_EQ(clone->ThrownLine(), 12);
        EXPECT_THROW(clone->Propagate(), T);
        if constexpr (requires { caught.GetSystemErrorCode(); }) {
            EXPECT_EQ(caught.GetSystemErrorCode().Number(), 2);
        }
        return;
    } catch (...) {
    }
    ADD_FAILURE() << "not caught by its own class";
}

TEST(Errors, AreCaughtByTheirExactClassAndCloneWhole) {
    Family family;
    ExpectThrown(family.readError);
    ExpectThrown(family.shortRead);
    ExpectThrown(family.systemError);
    ExpectThrown(family.systemException);
    ExpectThrown(family.writeError);
    ExpectThrown(family.shortWrite);
}

TEST(Errors, ClonesLiveInTheProductHeapAndFailWithIt) {
    Family family;
    for (KZMBasException* const each : family.All()) {
        host_heap::Watch();
        delete each->Clone();
        EXPECT_EQ(host_heap::g_probe.requests, 1);
        EXPECT_EQ(host_heap::g_probe.live, 0);
        host_heap::g_probe.untilFailure = 1;
        EXPECT_THROW(each->Clone(), std::bad_alloc);
        host_heap::Unwatch();
    }
}

TEST(SystemErrorCode, CapturesTheNumberAskedFor) {
    errno = ENOENT;
    const omi_SystemErrorCode cLibrary(omi_SystemErrorCode::CLibraryError);
    const omi_SystemErrorCode none(kNoType);
    EXPECT_EQ(cLibrary.CLibraryCode(), ENOENT);
    EXPECT_EQ(cLibrary.SystemCode(), -1);
    EXPECT_EQ(none.CLibraryCode(), -1);
    EXPECT_EQ(none.SystemCode(), -1);
    omi_SystemErrorCode code(kNoType);
    errno = ENOENT;
    code.SetError(omi_SystemErrorCode::SystemError);
    EXPECT_EQ(code.CLibraryCode(), -1);
    EXPECT_NE(code.SystemCode(), -1);
    EXPECT_EQ(std::error_code(cLibrary), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(std::error_code(none));

    EXPECT_EQ(cow_SystemErrorCode(cLibrary).GetType(), omi_SystemErrorCode::CLibraryError);
    EXPECT_EQ(cow_SystemErrorCode(cLibrary).GetDetail(), ENOENT);
    EXPECT_STREQ(cow_SystemErrorCode(cLibrary).GetText().CStr(), "No such file or directory");
    EXPECT_EQ(cow_SystemErrorCode(code).GetType(), omi_SystemErrorCode::SystemError);
    EXPECT_EQ(cow_SystemErrorCode(none), cow_SystemErrorCode(kNoType, -1));
    EXPECT_STREQ(cow_SystemErrorCode(none).GetText().CStr(), "");
    EXPECT_STRNE(cow_SystemErrorCode(omi_SystemErrorCode::CLibraryError, -7).GetText().CStr(), "");
}

// Throws the error's detail as a plain int.
struct OwnFactory : KZMBasUtlExceptionFactory {
    static inline int s_live = 0;
    OwnFactory() { ++s_live; }
    ~OwnFactory() override { --s_live; }
    void throwSystemErrorException(cow_SystemErrorCode code) override { throw code.GetDetail(); }
};

void Raise() {
    KZMBasUtlExceptionModel::throwSystemErrorException(
        cow_SystemErrorCode(omi_SystemErrorCode::SystemError, 2));
}

TEST(ExceptionModel, TheFactoryInForceChoosesWhatIsThrown) {
    try {
        Raise();
        ADD_FAILURE() << "returned";
    } catch (const KZMBasUtlSystemErrorException& error) {
        EXPECT_EQ(error.GetSec(), cow_SystemErrorCode(omi_SystemErrorCode::SystemError, 2));
        EXPECT_STREQ(error.ThrownFile(), "KZMBasUtlExcDefaultFactory.cpp");
        EXPECT_GT(error.ThrownLine(), 0);
    }
    EXPECT_TRUE(KZMBasUtlExceptionModel::setBehavior(new OwnFactory));
    EXPECT_THROW(Raise(), int);
    EXPECT_TRUE(KZMBasUtlExceptionModel::setBehavior(new OwnFactory));
    EXPECT_EQ(OwnFactory::s_live, 1);
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(KZMBasUtlExceptionModel::setBehavior(nullptr));
    EXPECT_EQ(OwnFactory::s_live, 0);
    KZMBasUtlExceptionModel::setBehavior(new KZMBasUtlExcDefaultFactory);
    EXPECT_THROW(Raise(), KZMBasUtlSystemErrorException);
}

TEST(ExceptionModel, TheModuleStartsAndStopsItOnce) {
    int count = 0;
    KZMBasUtils_finalize(count);  // that of the library's own start
    EXPECT_EQ(count, -1);
    KZMBasUtils_initialize(count);
    KZMBasUtils_initialize(count);
    KZMBasUtils_finalize(count);
    EXPECT_EQ(count, 0);
    EXPECT_THROW(Raise(), KZMBasUtlSystemErrorException);

    // A model that ends with a factory in force takes it along.
    KZMBasUtlExceptionModel::setBehavior(new OwnFactory);
    omi_SingletonBase<KZMBasUtlExcModelSingleton>::Finalize();
    EXPECT_EQ(OwnFactory::s_live, 0);
    KZMBasUtlExceptionModel::setBehavior(new KZMBasUtlExcDefaultFactory);
}

TEST(Version, TheLibraryTellsWhichHeadersItServes) {
    KZMBasUtlVersion& version = omi_Singleton<KZMBasUtlVersion>::Instance();
    EXPECT_TRUE(version.Serves());
    EXPECT_EQ(version.Number(), KZM_VERSION);
    EXPECT_EQ(version.Text(), std::to_string(version.Major()) + "." +
                                  std::to_string(version.Minor()) + "." +
                                  std::to_string(version.Patch()));
    for (const int foreign : {KZM_VERSION + 1, KZM_VERSION + 1000, KZM_VERSION + 1000000, -1})
        EXPECT_FALSE(version.Serves(foreign)) << foreign;
}

}  // namespace
