#pragma once

#include <QNetworkRequest>
#include <QUrl>

#include <functional>

class QNetworkReply;

namespace orvelle {

/// Whether an update may come from there: over https, or over http from this very machine, which is
/// for tests.
bool isSafeAddress(const QUrl& address);

/// Whether what came from one address may send us to another: that must be safe, too, and from
/// https nothing leads back to http.
bool mayLeadTo(const QUrl& from, const QUrl& to);

/// Where the signature of that file is: beside it.
QUrl signatureAddress(const QUrl& file);

/// Ends by itself when no byte arrives for `stallMs`, as canceled. Redirections wait for
/// followSafely().
QNetworkRequest webRequest(const QUrl& address, int stallMs);

/// Lets the reply be redirected where mayLeadTo() agrees. Elsewhere `refuse` is called and nothing
/// more comes; it should end the reply.
void followSafely(QNetworkReply& reply, std::function<void()> refuse);

}  // namespace orvelle
