#include "ui_kit/UiKit.h"

#include "ui_kit/Box.h"
#include "ui_kit/HintWindow.h"
#include "ui_kit/Symbol.h"
#include "ui_kit/X11WindowManagement.h"

#include <QDir>
#include <QQuickWindow>

void qml_register_types_Keldra_UiKit();

/// Static libraries bring their resources only to those who ask, and those must not stand in a namespace.
static void bringResources() {
    Q_INIT_RESOURCE(icons);
    Q_INIT_RESOURCE(qmlcache_keldra_ui_kit);
    qml_register_types_Keldra_UiKit();
}

namespace keldra {
namespace {

constexpr char uri[] = "Keldra.UiKit";
constexpr char themeProperty[] = "keldraTheme";
constexpr char hintsProperty[] = "keldraHints";

template <const char* property>
QObject* objectOfEngine(QQmlEngine* engine, QJSEngine*) {
    return engine->property(property).value<QObject*>();
}

void registerTypes() {
    static const bool isDone = [] {
        bringResources();
        qmlRegisterType<Symbol>(uri, 1, 0, "Symbol");
        qmlRegisterAnonymousType<BoxBorder>(uri, 1);
        if (QQuickWindow::sceneGraphBackend() == QLatin1String("software"))
            qmlRegisterType<Box>(uri, 1, 0, "Box");
        else
            qmlRegisterType(QUrl(QStringLiteral("qrc:/qt/qml/Keldra/UiKit/RectangleBox.qml")), uri, 1, 0, "Box");
        qmlRegisterSingletonType<Theme>(uri, 1, 0, "Theme", &objectOfEngine<themeProperty>);
        qmlRegisterSingletonType<HintWindow>(uri, 1, 0, "Hints", &objectOfEngine<hintsProperty>);
        return true;
    }();
    Q_UNUSED(isDone)
}

} // namespace

UiKit::UiKit(std::shared_ptr<OwnWindows> ownWindows, bool recordingsSeeAllWindows)
    : m_ownWindows(std::move(ownWindows))
    , m_recordingsSeeAllWindows(recordingsSeeAllWindows)
    , m_hints(std::make_unique<HintWindow>(*this)) {
    registerTypes();
    m_engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    for (QObject* object : {static_cast<QObject*>(&m_theme), static_cast<QObject*>(m_hints.get())})
        QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
    m_engine.setProperty(themeProperty, QVariant::fromValue<QObject*>(&m_theme));
    m_engine.setProperty(hintsProperty, QVariant::fromValue<QObject*>(m_hints.get()));
    refreshTheme();
}

UiKit::~UiKit() = default;

void UiKit::chooseRenderer() {
    QQuickWindow::setDefaultAlphaBuffer(true);
    const bool hasGpu =
        !QDir(QStringLiteral("/dev/dri")).entryList({QStringLiteral("renderD*")}, QDir::System).isEmpty();
    if (!hasGpu && !qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
}

void UiKit::refreshTheme() {
    m_theme.setIsTranslucent(hasCompositingManager());
}

} // namespace keldra
