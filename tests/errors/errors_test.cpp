#include <errors/KZMBasUtlExcDefaultFactory.h>
#include <errors/KZMBasUtlExcModelSingleton.h>
#include <errors/KZMBasUtlExceptionModel.h>
#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlShortRead.h>
#include <errors/KZMBasUtlShortWrite.h>
#include <errors/KZMBasUtlSystemError.h>
#include <errors/KZMBasUtlSystemErrorException.h>
#include <errors/KZMBasUtlWriteError.h>
#include <support/memory_failure.h>

#include <cerrno>
#include <memory>
#include <string>

namespace {

const KZMBasSystemError kNotFound(2);  // the same condition on both systems
const cow_SystemErrorCode kNotFoundCode(omi_SystemErrorCode::SystemError, 2);
const omi_SystemErrorCode::ErrorCodeType kNoType{2};

// Thrown, caught and cloned: the same class, code, text and site, in the product's heap.
template <class T>
void ExpectFamilyMember(T original, int code, const std::string& text) {
    SCOPED_TRACE(code);
    KZMBasException& base = original;
    EXPECT_EQ(base.GetCode(), code);
    EXPECT_EQ(base.UserReport(KZMBasStringModeUser).CStr(), text);
    try {
        base.Throw("site.cpp", 12);
    } catch (const T& caught) {
        EXPECT_EQ(caught.ThrownLine(), 12);
        const auto clone = [&](int) {
            const std::unique_ptr<KZMBasException> made(caught.Clone());
            EXPECT_EQ(made->DeveloperReport(KZMBasStringModeUser),
                      caught.DeveloperReport(KZMBasStringModeUser));
            EXPECT_THROW(made->Propagate(), T);
        };
        ForEveryAllocationFailure([] { return 0; }, clone, [](int, bool) {});
    }
}

TEST(Errors, EachClassKeepsItsCodeAndTextWhenThrownAndCloned) {
    const std::string notFound = kNotFound.AsString();
    ExpectFamilyMember(KZMBasUtlReadError(kNotFound), 303, "Read Error: " + notFound);
    ExpectFamilyMember(KZMBasUtlShortRead(), 304, "All the data requested could not be read.");
    for (const char* const name : {"CreateFile", "%n%s", static_cast<const char*>(nullptr)})
        ExpectFamilyMember(KZMBasUtlSystemError(name, kNotFound), 305,
                           std::string("System Error ") + (name ? name : "") + ": " + notFound);
    ExpectFamilyMember(KZMBasUtlSystemErrorException(kNotFoundCode), 306,
                       "System Error: " + notFound);
    ExpectFamilyMember(KZMBasUtlSystemErrorException(cow_SystemErrorCode(kNoType, -1)), 306,
                       "System Error: ");
    ExpectFamilyMember(KZMBasUtlWriteError(kNotFound), 307, "Write Error: " + notFound);
    ExpectFamilyMember(KZMBasUtlShortWrite(), 308,
                       "All the data provided to write could not be written.");
}

TEST(SystemErrorCode, CapturesTheNumberAskedFor) {
    for (const int type : {0, 1, 2}) {
        SCOPED_TRACE(type);
        errno = ENOENT;
        const omi_SystemErrorCode code{omi_SystemErrorCode::ErrorCodeType(type)};
        EXPECT_EQ(code.CLibraryCode(), type == 0 ? ENOENT : -1);
        EXPECT_EQ(code.SystemCode() != -1, type == 1);
        const cow_SystemErrorCode value(code);
        EXPECT_TRUE(value.GetType() == type && (value.GetDetail() == -1) == (type == 2));
        if (type == 1) continue;
        EXPECT_STREQ(value.GetText().CStr(), type == 0 ? "No such file or directory" : "");
        EXPECT_EQ(std::error_code(code) == std::errc::no_such_file_or_directory, type == 0);
    }
}

// Throws the error's detail as a plain int.
struct OwnFactory : KZMBasUtlExceptionFactory {
    static inline int s_live = 0;
    OwnFactory() { ++s_live; }
    ~OwnFactory() override { --s_live; }
    void throwSystemErrorException(cow_SystemErrorCode code) override { throw code.GetDetail(); }
};

void Raise() { KZMBasUtlExceptionModel::throwSystemErrorException(kNotFoundCode); }

TEST(ExceptionModel, TheFactoryInForceChoosesWhatIsThrown) {
    try {
        Raise();
        ADD_FAILURE() << "returned";
    } catch (const KZMBasUtlSystemErrorException& error) {
        EXPECT_EQ(error.GetSec(), kNotFoundCode);
        EXPECT_STREQ(error.ThrownFile(), "KZMBasUtlExcDefaultFactory.cpp");
    }
    for (const bool own : {true, true, false, false, true}) {
        EXPECT_TRUE(KZMBasUtlExceptionModel::setBehavior(own ? new OwnFactory : nullptr));
        EXPECT_EQ(OwnFactory::s_live, own);
    }
    EXPECT_THROW(Raise(), int);
    omi_SingletonBase<KZMBasUtlExcModelSingleton>::Finalize();  // takes the factory along
    EXPECT_EQ(OwnFactory::s_live, 0);
    KZMBasUtlExceptionModel::setBehavior(new KZMBasUtlExcDefaultFactory);
}

}  // namespace
