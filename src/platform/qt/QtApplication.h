#pragma once

#include "platform/Application.h"

namespace keldra {

/// The program as Qt knows it. Made after the QCoreApplication and gone before it; one without windows never becomes
/// active.
class QtApplication final : public Application {
public:
    QtApplication(QString version, QString build);
    ApplicationFacts facts() const override { return m_facts; }
    void terminate() override;

private:
    ApplicationFacts m_facts;
};

/// The machine's model as its firmware names it in `file`, or `otherwise` where there is no such file or name.
QString deviceModel(const QString& file, const QString& otherwise);

} // namespace keldra
