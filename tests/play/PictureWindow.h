#pragma once

#include "imaging/PixelBuffer.h"

#include <QRasterWindow>

namespace keldra::play {

/// Shows pictures, fitted into the window.
class PictureWindow : public QRasterWindow {
public:
    /// 4:2:0.
    void show(const PixelBuffer& picture);
    using QRasterWindow::show;

protected:
    void paintEvent(QPaintEvent*) override;

private:
    PixelBuffer m_shown;
};

} // namespace keldra::play
