#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>

namespace keldra {

/// One of the program's own symbols in one colour, sharp at any size and scale. Main thread.
class Symbol : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit Symbol(QQuickItem* parent = nullptr);

    /// As the file in resources/icons. One that does not exist shows nothing, and is logged.
    const QString& name() const { return m_name; }
    void setName(const QString& name);
    QColor color() const { return m_color; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void nameChanged();
    void colorChanged();

private:
    QString m_name;
    QColor m_color = Qt::white;
};

} // namespace keldra
