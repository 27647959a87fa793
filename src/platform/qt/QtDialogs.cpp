#include "platform/qt/QtDialogs.h"

#include <QFileDialog>
#include <QMimeDatabase>

namespace keldra {
namespace {

using Answer = Completion<std::optional<QUrl>>;

std::optional<QUrl> picked(const QFileDialog& dialog, int result) {
    const QList<QUrl> urls = dialog.selectedUrls();
    return result == QDialog::Accepted && !urls.isEmpty() ? std::optional(urls.first()) : std::nullopt;
}

} // namespace

QStringList namePatterns(const QStringList& types) {
    const QMimeDatabase database;
    QStringList patterns;
    for (const QString& type : types) {
        if (!type.endsWith(u"/*")) {
            patterns += database.mimeTypeForName(type).globPatterns();
            continue;
        }
        for (const QMimeType& each : database.allMimeTypes())
            if (each.name().startsWith(QStringView(type).chopped(1)))
                patterns += each.globPatterns();
    }
    patterns.removeDuplicates();
    return patterns;
}

QtDialogs::~QtDialogs() {
    delete m_open;
}

QFileDialog* QtDialogs::makeDialog(const Answer& done) {
    if (m_open) {
        m_open->raise();
        m_open->activateWindow();
        m_mainQueue.post([done] { done(std::nullopt); });
        return nullptr;
    }
    auto* dialog = new QFileDialog;
    m_open = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // Our panels stay above everything else.
    dialog->setWindowFlag(Qt::WindowStaysOnTopHint);
    QObject::connect(dialog, &QDialog::finished, dialog, [this, dialog, done](int result) {
        m_open.clear();
        m_mainQueue.post([done, url = picked(*dialog, result)] { done(url); });
    });
    return dialog;
}

void QtDialogs::chooseFolder(FolderDialog asked, Answer done) {
    QFileDialog* dialog = makeDialog(done);
    if (!dialog)
        return;
    dialog->setWindowTitle(asked.title);
    dialog->setLabelText(QFileDialog::Accept, asked.prompt);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setDirectoryUrl(asked.folder);
    dialog->open();
}

void QtDialogs::chooseFile(FileDialog asked, Answer done) {
    QFileDialog* dialog = makeDialog(done);
    if (!dialog)
        return;
    dialog->setWindowTitle(asked.message);
    dialog->setLabelText(QFileDialog::Accept, asked.prompt);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    if (const QStringList patterns = namePatterns(asked.types); !patterns.isEmpty())
        dialog->setNameFilter(QStringLiteral("%1 (%2)").arg(QFileDialog::tr("Files"), patterns.join(u' ')));
    dialog->open();
}

} // namespace keldra
