#pragma once
#include <coreutils/KZMBasStringMode.h>
#include <coreutils/atr_String.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string_view>
#include <type_traits>

// One argument of the formatter, with its type. Refers to texts; made for the length of a call.
class KZM_API atr_FormatArg {
public:
    // From every type that has a natural form. A null text reads as the empty text; enumerators
    // print as their numbers.
    template <std::integral T>
    atr_FormatArg(T value) {
        if constexpr (std::same_as<T, bool>) {
            SetText(value ? "true" : "false");
        } else if constexpr (std::same_as<T, char>) {
            m_kind = Kind::kChar;
            m_char = value;
        } else if constexpr (std::signed_integral<T>) {
            m_kind = Kind::kSigned;
            m_signed = value;
        } else {
            m_kind = Kind::kUnsigned;
            m_unsigned = value;
        }
    }
    template <class E>
    requires std::is_enum_v<E> atr_FormatArg(E value)
        : atr_FormatArg(static_cast<std::underlying_type_t<E>>(value)) {}
    atr_FormatArg(std::nullptr_t) { SetText(""); }
    atr_FormatArg(float value) : m_kind(Kind::kFloat), m_float(value) {}
    atr_FormatArg(double value) : m_kind(Kind::kDouble), m_double(value) {}
    atr_FormatArg(long double value) : atr_FormatArg(static_cast<double>(value)) {}
    atr_FormatArg(const char* text) { SetText(atr_StringBase::OrEmpty(text)); }
    atr_FormatArg(std::string_view text) { SetText(text); }
    atr_FormatArg(const atr_StringBase& text) { SetText(text); }
    atr_FormatArg(const void* address) : m_kind(Kind::kPointer), m_pointer(address) {}

    // Writes the natural form behind the text.
    void AppendTo(atr_String& out) const;

private:
    enum class Kind : unsigned char { kSigned, kUnsigned, kFloat, kDouble, kChar, kText, kPointer };
    void SetText(std::string_view text) {
        m_kind = Kind::kText;
        m_text = text;
    }

    Kind m_kind;
    union {
        std::int64_t m_signed;
        std::uint64_t m_unsigned;
        float m_float;
        double m_double;
        char m_char;
        const void* m_pointer;
    };
    std::string_view m_text;
};

// What the templates below call.
KZM_API atr_String atr_formatArgs(const char* format, std::initializer_list<atr_FormatArg> args);
KZM_API const char* atr_translate(KZMBasStringMode mode, const char* text);

// The texts of the formatter: % and a conversion letter, with length letters before it as printf
// has them, stand for the next argument in its natural form, whatever the letter; %% is a percent
// sign. Numbers read back as the same value, bool is true or false, addresses are hexadecimal. No
// format can write memory or misread an argument: a directive without an argument stays as it
// stands, surplus arguments are left out.
template <class... Args>
atr_String atr_format(const char* format, const Args&... args) {
    return atr_formatArgs(format, {atr_FormatArg(args)...});
}

// The same, after the format has been translated if the mode asks for it.
template <class... Args>
atr_String atr(KZMBasStringMode mode, const char* format, const Args&... args) {
    return atr_formatArgs(atr_translate(mode, format), {atr_FormatArg(args)...});
}

// A text as the user sees it; percent signs in it are plain characters.
inline atr_String atr(const char* text) {
    return atr_String(atr_translate(KZMBasStringModeUser, text));
}

// The same, written to a file; an error of the file goes unnoticed.
template <class... Args>
void atr_print(std::FILE* file, const char* format, const Args&... args) {
    const atr_String text = atr_format(format, args...);
    std::fwrite(text.CStr(), 1, static_cast<std::size_t>(text.Length()), file);
}

// Installs the translation for texts shown to the user; null, as at load, leaves them as they are.
// A translator returns a text that lives on, or null for one that it does not know.
using atr_Translator = const char* (*)(const char* text);
KZM_API void atr_setTranslator(atr_Translator translator);
