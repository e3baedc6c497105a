#include "core/wipe.h"

#include <sodium.h>

namespace orvelle {

namespace {

template <class QtText>
void wipeUnshared(QtText& text) {
    // Asking a shared one for its memory would make one more copy.
    if (text.isDetached())
        wipe(text.data(), static_cast<size_t>(text.size()) * sizeof(*text.data()));
    text = QtText();
}

}  // namespace

void wipe(void* bytes, size_t size) {
    sodium_memzero(bytes, size);
}

void wipe(std::string& text) {
    wipe(text.data(), text.size());
    text.clear();
}

void wipe(QByteArray& text) {
    wipeUnshared(text);
}

void wipe(QString& text) {
    wipeUnshared(text);
}

}  // namespace orvelle
