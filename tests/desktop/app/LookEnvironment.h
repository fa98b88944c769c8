// The application's own look for a program of tests.
#pragma once

#include "app/Look.h"

#include <gtest/gtest.h>

#include <QApplication>

namespace deckmate::test {

///     [[maybe_unused]] auto* const look = testing::AddGlobalTestEnvironment(new LookEnvironment);
class LookEnvironment final : public testing::Environment {
public:
    void SetUp() override { applyLook(*qApp); }
};

} // namespace deckmate::test
