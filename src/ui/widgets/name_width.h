#pragma once

#include <QString>

class QLineEdit;

namespace orvelle {

/// How wide a name is: characters below code 256 count 1, all others 2.
int nameWidth(const QString& name);
/// The longest beginning of `name` that is no wider than `maximum`; all of it when that is
/// negative.
QString cutToWidth(const QString& name, int maximum);
/// Cuts what stands in the field; the cursor stays where it is.
void cutToWidth(QLineEdit& edit, int maximum);

}  // namespace orvelle
