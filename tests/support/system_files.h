#pragma once

#include <QByteArray>
#include <QString>

namespace orvelle::test {

/// What a file holds that, once run, makes an empty file at `proof`, whose name has no quotes.
/// `padding` makes it that many bytes longer. Its own name is to end with ".exe".
QByteArray programThatMakes(const QString& proof, int padding = 0);

/// Whether the system keeps with each file if it may be run; else its name says so.
bool isRunnableByMark();

/// A named pipe among the files; false where the system keeps those elsewhere.
bool makePipe(const QString& path);

}  // namespace orvelle::test
