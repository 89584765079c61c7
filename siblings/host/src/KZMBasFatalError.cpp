#include <host/KZMBasFatalError.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

const char* OrEmpty(const char* text) { return text ? text : ""; }

void ReportAndAbort(const char* message, const char* text1, const char* text2, const char* text3,
                    const char* source, int line) {
    std::fprintf(stderr, "%s", OrEmpty(message));
    for (const char* text : {text1, text2, text3})
        if (text && *text) std::fprintf(stderr, " %s", text);
    std::fprintf(stderr, " (%s:%d)\n", OrEmpty(source), line);
    std::fflush(stderr);
    std::abort();
}

constinit std::atomic<KZMBasFatalErrorHandler> g_handler{&ReportAndAbort};

}  // namespace

void KZMBasFatalError(const char* message, const char* text1, const char* text2, const char* text3,
                      const char* source, int line) {
    g_handler.load()(message, text1, text2, text3, source, line);
    std::abort();
}

KZMBasFatalErrorHandler KZMBasSetFatalErrorHandler(KZMBasFatalErrorHandler handler) {
    return g_handler.exchange(handler ? handler : &ReportAndAbort);
}
