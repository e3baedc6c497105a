#pragma once

#include <QObject>

#include <memory>

/// The test classes of this room; each file defines its own maker.
std::unique_ptr<QObject> makePacingTest();
std::unique_ptr<QObject> makeStreamRulesTest();
std::unique_ptr<QObject> makeTutkInputTest();
std::unique_ptr<QObject> makeDevicePlayerTest();
