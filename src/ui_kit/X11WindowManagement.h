#pragma once

#include <QImage>
#include <QRect>
#include <QRegion>

#include <vector>

class QWindow;

namespace keldra {

/// What Qt has no word for on X11. On other desktops nothing here does anything, and the questions answer as said.
/// Main thread.

/// Whether windows can let what is below shine through; true elsewhere.
bool hasCompositingManager();
/// Whether somebody places and stacks windows; true elsewhere.
bool hasWindowManager();
/// All monitors, root pixels; empty elsewhere.
std::vector<QRect> rootRectsOfMonitors();
/// All of the root window, its own pixels; empty elsewhere.
QRect rectOfRoot();

/// From its next showing on, window managers treat a frameless window of type Qt::Window as a panel: on every virtual
/// desktop, in neither taskbar nor pager, never tiled or maximised, and for itself. (A Qt::Tool belongs to all other
/// windows of the program, and some show and hide it with those.)
void manageAsPanel(QWindow& window);
/// All such windows that are on the screen, but for this one, come to the front, the newest last.
void raisePanelsExcept(const QWindow& window);

/// Moves the window to exactly these pixels, which Qt's rounded units may not be able to say. It may be hidden.
/// Answers whether it did.
bool placeInRoot(QWindow& window, const QRect& rootPixels);
/// Cuts the window out along that region, in pixels from its upper left corner; nothing of an empty region shows.
void cutToShape(QWindow& window, const QRegion& pixels);
/// The pointer sees the window, and the frames that a window manager has put around it, only in that region, in the same
/// pixels. Ask again when the window has been shown: not all window managers pass on to their frames what they find, and
/// Qt's flag for windows that let clicks through speaks of the window alone.
void takeClicksOnlyIn(QWindow& window, const QRegion& pixels);
/// What that part of the screen shows now, without the pointer; null elsewhere, or when the server does not answer.
QImage takeScreenshot(const QRect& rootPixels);

} // namespace keldra
