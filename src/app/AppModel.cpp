#include "app/AppModel.h"

#include <QPointer>

#include <algorithm>

namespace keldra {
namespace {

namespace keys = preferenceKeys;

std::uint32_t displayOf(const CaptureSelection& selection) {
    return std::visit([](const auto& each) { return each.displayID; }, selection);
}

QString sizeLabel(QSizeF points) {
    return QStringLiteral("%1 x %2").arg(qRound(points.width())).arg(qRound(points.height()));
}

/// A point on the edge between two screens is on the one that begins there.
bool holds(const QRectF& frame, QPointF point) {
    return point.x() >= frame.left() && point.x() < frame.right() && point.y() >= frame.top() &&
           point.y() < frame.bottom();
}

} // namespace

AppModel::AppModel(Parts parts) : m_parts(std::move(parts)) {
    loadPreferences();
    m_parts.preferences.setValue(keys::microphoneEnabled, false);
    m_parts.preferences.setValue(keys::cameraEnabled, false);
    readScreenPermission();
    refreshDisplays();
    refreshCaptureDevices();
    watch();
    updateMicrophoneMonitor();
    syncPointerEffectsMonitor();
}

AppModel::~AppModel() = default;

void AppModel::watch() {
    // All arrive a turn later, when whoever told them has gone on.
    const auto later = [main = &m_parts.mainQueue, model = QPointer<AppModel>(this)](auto work) {
        if (model)
            main->post([model, work = std::move(work)] {
                if (model)
                    work(*model);
            });
    };
    connect(&m_parts.microphoneLevelMonitor, &MicrophoneLevelMonitor::levelChanged, this,
            [later](double level) { later([level](AppModel& model) { model.setMicrophoneLevel(level); }); });
    connect(this, &AppModelFields::errorMessageChanged, this, &AppModel::noteErrorMessage);
    if (m_parts.platform.devices)
        m_parts.platform.devices->setOnChanged(
            [later] { later([](AppModel& model) { model.refreshCaptureDevices(); }); });
}

bool AppModel::canChangeSettings() const {
    return recordingState() == RecordingState::idle || recordingState() == RecordingState::failed;
}

int AppModel::cameraPreviewHeight() const {
    if (!m_parts.camera->isRunning())
        return 50;
    return cameraOverlaySize() == CameraOverlaySize::small ? 228 : 288;
}

void AppModel::readScreenPermission() {
    const auto& permissions = m_parts.platform.permissions;
    setHasScreenPermission(!permissions || permissions->hasScreenCapture());
}

void AppModel::refreshDisplays() {
    QList<CaptureDisplay> rows;
    for (const Screen& screen : m_parts.platform.screens->screens())
        if (screen.number != 0)
            rows.append({screen.number, screen.name, sizeLabel(screen.frame.size())});
    setDisplays(rows);
    const bool isListed = std::any_of(rows.begin(), rows.end(),
                                      [this](const CaptureDisplay& row) { return row.id == selectedDisplayID(); });
    if (!isListed)
        setSelectedDisplayID(rows.isEmpty() ? 0 : rows.first().id);
}

QCoro::Task<> AppModel::selectCaptureMode(CaptureMode mode) {
    setIsSelectionRequiredPresented(false);
    if (captureMode() == mode && currentSelection() && modeOf(*currentSelection()) == mode) {
        setCurrentSelection(std::nullopt);
        setErrorMessage({});
        co_return;
    }
    if (recordsDisplaysOnly() && mode != CaptureMode::display) {
        showNotice(
            AppNotice::Kind::info,
            QStringLiteral(QT_TRANSLATE_NOOP("Messages", "This desktop lets programs record whole displays only.")),
            std::nullopt);
        co_return;
    }
    setCaptureMode(mode);
    co_await chooseCaptureSelection(true);
}

QCoro::Task<bool> AppModel::chooseCaptureSelection(bool force) {
    if (!force && currentSelection())
        co_return true;
    if (recordsDisplaysOnly()) {
        selectDisplay();
        setErrorMessage({});
        co_return true;
    }
    // The windows may be replaced while the user picks.
    const auto request = m_windows.requestCaptureSelection;
    if (!request) {
        setErrorMessage({});
        co_return false;
    }
    const std::uint32_t fallback = displays().isEmpty() ? 0 : displays().first().id;
    const QPointer<AppModel> alive(this);
    const std::optional<CaptureSelection> selection =
        co_await request(captureMode(), selectedDisplayID() != 0 ? selectedDisplayID() : fallback);
    if (!alive)
        co_return false;
    if (selection) {
        setCurrentSelection(selection);
        setSelectedDisplayID(displayOf(*selection));
    }
    setErrorMessage({});
    co_return selection.has_value();
}

/// Which one that is, the desktop asks later.
void AppModel::selectDisplay() {
    const QList<CaptureDisplay> known = displays();
    const auto found = std::find_if(known.begin(), known.end(),
                                    [this](const CaptureDisplay& each) { return each.id == selectedDisplayID(); });
    setCaptureMode(CaptureMode::display);
    setCurrentSelection(DisplaySelection{selectedDisplayID(), found != known.end() ? found->name : QString()});
}

void AppModel::updateRegionSelection(const QRectF& rect) {
    const QList<Screen> screens = m_parts.platform.screens->screens();
    const auto found = std::find_if(screens.begin(), screens.end(),
                                    [&](const Screen& screen) { return holds(screen.frame, rect.center()); });
    const bool isKnown = found != screens.end() && found->number != 0;
    const std::uint32_t displayID = isKnown ? found->number : selectedDisplayID();
    setCurrentSelection(RegionSelection{displayID, rect});
    setSelectedDisplayID(displayID);
}

} // namespace keldra
