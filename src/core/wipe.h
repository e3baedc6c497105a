#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <string>

/// Passwords are not left in memory that is freed. What Qt and the C++ library copied on their own
/// (a field's undo history, a parser's tree, a string that grew) is out of reach.
namespace orvelle {

/// Overwrites and empties a text; one that shares its memory with others is only let go of.
void wipe(std::string& text);
void wipe(QByteArray& text);
void wipe(QString& text);

/// Overwrites bytes, also where the compiler sees that nobody reads them again.
void wipe(void* bytes, size_t size);

/// Wipes a text, which it borrows, at the end of the scope.
template <class Text>
class WipedAtEnd {
public:
    explicit WipedAtEnd(Text& text) : m_text(text) {}
    ~WipedAtEnd() { wipe(m_text); }
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

private:
    Text& m_text;
};

}  // namespace orvelle
