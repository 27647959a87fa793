#include "desktop/FakeService.h"
#include "doubles/Waiting.h"
#include "platform/portal/PortalPermissions.h"
#include "platform/qt/DBusSleepInhibitor.h"
#include "platform/qt/QtWorkspace.h"
#include "platform/qt/SettingsCommand.h"

#include <QCoreApplication>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QDesktopServices>

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

namespace keldra {
namespace {

using test::Answer;
using test::FakeService;
using test::runUntil;

/// Takes the place of the desktop's way to open a folder.
class Opener : public QObject {
    Q_OBJECT
public:
    Opener() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~Opener() override { QDesktopServices::unsetUrlHandler("file"); }
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url); }
};

TEST(QtWorkspaceTest, ShowsAFileInTheFileManagerOrOpensItsFolder) {
    const QUrl file = QUrl::fromLocalFile("/tmp/a b/ü 100%.mov");
    Opener opener;
    QtWorkspace workspace;
    {
        FakeService manager("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                            [](const QDBusMessage&) { return QVariantList(); });
        workspace.reveal(file);
        ASSERT_TRUE(runUntil([&] { return !manager.calls.isEmpty(); }));
        EXPECT_EQ(manager.calls.first().member(), "ShowItems");
        EXPECT_EQ(manager.calls.first().arguments(),
                  (QVariantList{QStringList{"file:///tmp/a%20b/%C3%BC%20100%25.mov"}, QString()}));
    }
    workspace.reveal(file);
    ASSERT_TRUE(runUntil([&] { return !opener.opened.isEmpty(); }));
    EXPECT_EQ(opener.opened, QList<QUrl>{QUrl::fromLocalFile("/tmp/a b/")});
}

TEST(SettingsCommandTest, IsThatOfTheDesktop) {
    const struct {
        SettingsPage page;
        const char* desktops;
        QStringList programs;
        const char* wanted;
    } rows[] = {
        {SettingsPage::camera, "GNOME", {"gnome-control-center"}, "gnome-control-center camera"},
        {SettingsPage::camera, "ubuntu:GNOME", {"gnome-control-center"}, "gnome-control-center camera"},
        {SettingsPage::camera, "GNOME", {}, ""},
        {SettingsPage::camera, "KDE", {"systemsettings", "gnome-control-center"}, ""},
        {SettingsPage::microphone, "KDE", {"systemsettings5"}, "systemsettings5 kcm_pulseaudio"},
        {SettingsPage::microphone, "GNOME", {"gnome-control-center", "pavucontrol"}, "gnome-control-center microphone"},
        {SettingsPage::microphone, "XFCE", {"pavucontrol"}, "pavucontrol --tab=4"},
        {SettingsPage::microphone, "", {"pavucontrol"}, "pavucontrol --tab=4"},
        {SettingsPage::microphone, "XFCE", {}, ""},
        {SettingsPage::screenCapture, "GNOME", {"gnome-control-center"}, ""},
    };
    for (const auto& [page, desktops, programs, wanted] : rows)
        EXPECT_EQ(
            settingsCommand(page, desktops, [&](const QString& name) { return programs.contains(name); }).join(' '),
            wanted)
            << desktops;
}

TEST(DBusSleepInhibitorTest, HoldsWhatItIsGivenAndGivesItBack) {
    const struct {
        const char* name;
        const char* path;
        const char* interface;
    } rows[] = {
        {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"},
        {"org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
         "org.freedesktop.PowerManagement.Inhibit"},
    };
    for (const auto& [name, path, interface] : rows) {
        FakeService service(name, path, [](const QDBusMessage&) { return QVariantList{quint32(77)}; });
        DBusSleepInhibitor inhibitor;
        SleepInhibitor::Hold hold = inhibitor.inhibit("recording");
        ASSERT_TRUE(runUntil([&] { return !service.calls.isEmpty(); })) << name;
        // The answer is on its way here; one that is let go meanwhile is given back as well.
        hold.reset();
        ASSERT_TRUE(runUntil([&] { return service.calls.size() == 2; })) << name;
        const QDBusMessage inhibit = service.calls.first();
        EXPECT_EQ(inhibit.interface(), interface);
        EXPECT_EQ(inhibit.member(), "Inhibit");
        EXPECT_EQ(inhibit.arguments().last(), "recording");
        const QDBusMessage release = service.calls.last();
        EXPECT_EQ(release.interface(), interface);
        EXPECT_EQ(release.member(), "UnInhibit");
        EXPECT_EQ(release.arguments(), QVariantList{quint32(77)});
    }
}

TEST(DBusSleepInhibitorTest, KeepsTheLoginManagersLockOpen) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const auto isLetGo = [&] {
        pollfd reader{ends[0], POLLIN, 0};
        return poll(&reader, 1, 0) == 1 && (reader.revents & POLLHUP) != 0;
    };
    {
        FakeService manager("org.freedesktop.login1", "/org/freedesktop/login1", [&](const QDBusMessage&) {
            const QDBusUnixFileDescriptor lock(ends[1]);
            close(ends[1]);
            return QVariantList{QVariant::fromValue(lock)};
        });
        DBusSleepInhibitor inhibitor;
        SleepInhibitor::Hold hold = inhibitor.inhibit("recording");
        ASSERT_TRUE(runUntil([&] { return !manager.calls.isEmpty(); }));
        EXPECT_EQ(manager.calls.first().interface(), "org.freedesktop.login1.Manager");
        EXPECT_EQ(manager.calls.first().arguments().first(), "idle:sleep");
        EXPECT_EQ(manager.calls.first().arguments().last(), "block");
        // The answer to this comes behind the lock.
        const auto bus = QDBusConnection::systemBus();
        (void)bus.call(QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                                      "org.freedesktop.DBus.Peer", "Ping"));
        QCoreApplication::processEvents();
        EXPECT_FALSE(isLetGo());
        hold.reset();
        EXPECT_TRUE(runUntil(isLetGo));
    }
    close(ends[0]);
}

TEST(PortalPermissionsTest, GrantsWhereAPortalCastsScreens) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const auto ask = [](PortalPermissions& permissions) {
        Answer<Result<bool>> answer;
        permissions.requestScreenCapture(answer.taker());
        EXPECT_TRUE(answer.wait());
        EXPECT_EQ(permissions.hasScreenCapture(), *answer.value);
        return answer.value->value_or(false);
    };
    for (const quint32 sources : {0U, 3U}) {
        FakeService portal(
            "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
            [=](const QDBusMessage&) { return QVariantList{QVariant::fromValue(QDBusVariant(sources))}; });
        PortalPermissions permissions(bus);
        EXPECT_FALSE(permissions.hasScreenCapture());
        EXPECT_EQ(ask(permissions), sources != 0);
    }
    PortalPermissions withoutPortal(bus);
    EXPECT_FALSE(ask(withoutPortal));
}

} // namespace
} // namespace keldra

#include "DesktopServicesTest.moc"
