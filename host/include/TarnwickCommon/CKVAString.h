#pragma once

#include <string>

namespace Kelvor {

// The host's narrow string. Text is UTF-8 or plain bytes; lengths and indices
// count bytes. A null `char const*` is taken as the empty string everywhere.
class CKVAString
{
public:
    CKVAString() = default;
    CKVAString(char const* text);
    CKVAString(CKVAString const& other) = default;
    CKVAString(CKVAString&& other) noexcept = default;
    ~CKVAString() = default;

    CKVAString& operator=(CKVAString const& other) = default;
    CKVAString& operator=(CKVAString&& other) noexcept = default;
    CKVAString& operator=(char const* text) { return assign(text); }

    CKVAString& assign(char const* text);
    CKVAString& append(char const* text);
    CKVAString& append(CKVAString const& other);
    CKVAString& operator+=(char const* text) { return append(text); }
    CKVAString& operator+=(CKVAString const& other) { return append(other); }

    // Replaces the content with printf-style formatted text. A null format
    // gives the empty string.
    CKVAString& format(char const* fmt, ...) __attribute__((format(printf, 2, 3)));
    // Appends printf-style formatted text.
    CKVAString& appendFormat(char const* fmt, ...) __attribute__((format(printf, 2, 3)));

    unsigned int length() const { return static_cast<unsigned int>(mText.size()); }
    bool isEmpty() const { return mText.empty(); }
    void clear() { mText.clear(); }
    // Never null; valid until the string is next modified.
    char const* c_str() const { return mText.c_str(); }

    // The byte at `index`, or 0 past the end.
    char operator[](unsigned int index) const { return index < mText.size() ? mText[index] : '\0'; }

    // Byte index of the first `c` at or after `start`, or -1.
    int find(char c, unsigned int start = 0) const;
    // Byte index of the first occurrence of `text` at or after `start`, or -1.
    int find(char const* text, unsigned int start = 0) const;
    // Byte index of the last `c`, or -1.
    int reverseFind(char c) const;

    // Up to `count` bytes from `start`; the empty string when start is past the end.
    CKVAString mid(unsigned int start, unsigned int count = ~0u) const;
    CKVAString left(unsigned int count) const { return mid(0, count); }
    // Replaces every `from` byte by `to`; returns how many were replaced.
    unsigned int replace(char from, char to);

    // strcmp-like ordering by bytes.
    int compare(char const* text) const;

    friend bool operator==(CKVAString const& a, CKVAString const& b) { return a.mText == b.mText; }
    friend bool operator!=(CKVAString const& a, CKVAString const& b) { return a.mText != b.mText; }
    friend bool operator<(CKVAString const& a, CKVAString const& b) { return a.mText < b.mText; }
    friend bool operator==(CKVAString const& a, char const* b) { return a.compare(b) == 0; }
    friend bool operator!=(CKVAString const& a, char const* b) { return a.compare(b) != 0; }

private:
    std::string mText;
};

inline CKVAString operator+(CKVAString a, char const* b)
{
    return a.append(b);
}

inline CKVAString operator+(CKVAString a, CKVAString const& b)
{
    return a.append(b);
}

} // namespace Kelvor
