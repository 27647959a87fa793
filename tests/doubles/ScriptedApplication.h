#pragma once

#include "platform/Application.h"

namespace keldra {

/// A program on a machine that the test makes up.
class ScriptedApplication final : public Application {
public:
    ApplicationFacts facts() const override {
        return {QStringLiteral("1.4.2"), QStringLiteral("815"), QStringLiteral("Linux"),
                QStringLiteral("12"),    QStringLiteral("en"),  QStringLiteral("Fast Machine 9")};
    }
    void terminate() override { ++terminations; }

    int terminations = 0;
};

} // namespace keldra
