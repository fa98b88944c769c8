// The application's own look for a program of tests: including this is enough.
#pragma once

#include "app/Look.h"

#include <gtest/gtest.h>

#include <QApplication>

namespace deckmate::test {

class LookEnvironment final : public testing::Environment {
public:
    void SetUp() override { applyLook(*qApp); }
};

inline testing::Environment* const look = testing::AddGlobalTestEnvironment(new LookEnvironment);

} // namespace deckmate::test
