#pragma once

#include <QString>

#include <string>

namespace orvelle {

/// Whoever has a camera's password, or the device code that holds it, has the camera.

/// Why a password is refused, to follow "the password ..."; empty for a good one.
QString passwordRefusal(const std::string& password);

struct PasswordSources {
    QString file;            ///< its first line; empty: the environment, else the kept one
    QString stateDirectory;  ///< where a camera keeps the one that it made; empty: the usual place
    QString uid;             ///< whose
    bool mayMake = true;     ///< one is made where none is kept yet
};

struct FoundPassword {
    std::string text;  ///< to be wiped
    QString error;     ///< one line; empty when there is a password
    QString madeFile;  ///< where one is kept that was made just now; else empty
};

/// The camera's password from the first source that there is. A bad one is an error, it never
/// makes way for the next source. Takes ORVELLE_CAMERA_PASSWORD out of the environment, so that
/// no other thread may run yet.
FoundPassword findPassword(const PasswordSources& sources);

}  // namespace orvelle
