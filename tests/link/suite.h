#pragma once

#include <QtTest>

#include "link/client/link_client.h"
#include "link_fixture.h"
#include "support/suites.h"

namespace orvelle::test {

/// Base of the suites that use the client: each starts the link and ends it again.
class LinkSuite : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QCOMPARE(IOTC_Initialize2(0), 0);
        QCOMPARE(avInitialize(32), 32);
    }
    void cleanupTestCase() { LinkClient::instance().shutDown(); }
};

}  // namespace orvelle::test
