#include <coreutils/atr_format.h>

#include <atomic>
#include <charconv>
#include <cstring>

namespace {

constinit std::atomic<atr_Translator> g_translator{nullptr};

void AppendView(atr_String& out, std::string_view text) {
    out.Append(text.data(), static_cast<int>(text.size()));
}

template <class... Number>
void AppendNumber(atr_String& out, Number... value) {
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value...);
    out.Append(text, static_cast<int>(end.ptr - text));
}

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// The end of the directive whose percent sign is at p; p itself if none stands there.
const char* DirectiveEnd(const char* p) {
    const char* letter = p + 1;
    while (*letter && std::strchr("hljztLqw", *letter)) ++letter;
    return IsLetter(*letter) ? letter + 1 : p;
}

}  // namespace

void atr_FormatArg::AppendTo(atr_String& out) const {
    switch (m_kind) {
        case Kind::kSigned:
            return AppendNumber(out, m_signed);
        case Kind::kUnsigned:
            return AppendNumber(out, m_unsigned);
        case Kind::kFloat:
            return AppendNumber(out, m_float);
        case Kind::kDouble:
            return AppendNumber(out, m_double);
        case Kind::kChar:
            return AppendView(out, std::string_view(&m_char, 1));
        case Kind::kText:
            return AppendView(out, m_text);
        case Kind::kPointer:
            out.Append("0x");
            return AppendNumber(out, reinterpret_cast<std::uintptr_t>(m_pointer), 16);
    }
}

atr_String atr_formatArgs(const char* format, std::initializer_list<atr_FormatArg> args) {
    atr_String out;
    const atr_FormatArg* next = args.begin();
    const char* p = atr_StringBase::OrEmpty(format);
    while (*p) {
        const std::size_t plain = std::strcspn(p, "%");
        AppendView(out, std::string_view(p, plain));
        p += plain;
        if (*p == '\0') break;
        const char* const end = DirectiveEnd(p);
        if (p[1] == '%') {
            out.Append("%");
            p += 2;
        } else if (end != p && next != args.end()) {
            next++->AppendTo(out);
            p = end;
        } else {
            out.Append("%");
            ++p;
        }
    }
    return out;
}

const char* atr_translate(KZMBasStringMode mode, const char* text) {
    const atr_Translator translator = g_translator.load();
    if (mode != KZMBasStringModeUser || !translator || !text) return text;
    const char* const translated = translator(text);
    return translated ? translated : text;
}

void atr_setTranslator(atr_Translator translator) { g_translator.store(translator); }
