#pragma once

#include "ui_kit/Palette.h"

#include <QColor>
#include <QObject>

namespace keldra {

/// The program's own look, for views. Main thread.
class Theme : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isTranslucent READ isTranslucent NOTIFY isTranslucentChanged)
    Q_PROPERTY(QColor ground READ ground NOTIFY isTranslucentChanged)
    Q_PROPERTY(QColor menuGround READ menuGround CONSTANT)
    Q_PROPERTY(QColor hairline READ hairline CONSTANT)
    Q_PROPERTY(QColor text READ text CONSTANT)
    Q_PROPERTY(QColor secondaryText READ secondaryText CONSTANT)
    Q_PROPERTY(QColor accent READ accent CONSTANT)
    Q_PROPERTY(QColor accentText READ accentText CONSTANT)
    Q_PROPERTY(QColor success READ success CONSTANT)
    Q_PROPERTY(QColor warning READ warning CONSTANT)
    Q_PROPERTY(QColor fill READ fill CONSTANT)
    Q_PROPERTY(QColor fillHovered READ fillHovered CONSTANT)
    Q_PROPERTY(QColor fillPressed READ fillPressed CONSTANT)
    Q_PROPERTY(double panelRadius READ panelRadius CONSTANT)
    Q_PROPERTY(double controlRadius READ controlRadius CONSTANT)
    Q_PROPERTY(int fontSize READ fontSize CONSTANT)
    Q_PROPERTY(int smallFontSize READ smallFontSize CONSTANT)
    Q_PROPERTY(int leastFontSize READ leastFontSize CONSTANT)
    Q_PROPERTY(int motion READ motion CONSTANT)

public:
    using QObject::QObject;

    /// Something behind our windows shows through; otherwise they are shaped and opaque.
    bool isTranslucent() const { return m_isTranslucent; }
    void setIsTranslucent(bool isTranslucent);

    QColor ground() const { return m_isTranslucent ? palette::ground : palette::opaqueGround; }
    /// Of what lies over a panel.
    QColor menuGround() const { return palette::menuGround; }
    QColor hairline() const { return palette::hairline; }
    QColor text() const { return palette::text; }
    QColor secondaryText() const { return palette::secondaryText; }
    QColor accent() const { return palette::accent; }
    QColor accentText() const { return palette::accentText; }
    QColor success() const { return palette::success; }
    QColor warning() const { return palette::warning; }
    /// Of a control that rests, is pointed at, is pressed.
    QColor fill() const { return palette::fill; }
    QColor fillHovered() const { return palette::fillHovered; }
    QColor fillPressed() const { return palette::fillPressed; }
    /// Points, as the sizes of text.
    double panelRadius() const { return 18; }
    double controlRadius() const { return 10; }
    int fontSize() const { return 13; }
    int smallFontSize() const { return 11; }
    /// To which a text shrinks before it is cut.
    int leastFontSize() const { return 8; }
    /// How long a change of look takes, milliseconds.
    int motion() const { return 150; }

Q_SIGNALS:
    void isTranslucentChanged();

private:
    bool m_isTranslucent = true;
};

} // namespace keldra
