#include "ui_kit/Theme.h"

namespace keldra {

void Theme::setIsTranslucent(bool isTranslucent) {
    if (m_isTranslucent == isTranslucent)
        return;
    m_isTranslucent = isTranslucent;
    Q_EMIT isTranslucentChanged();
}

} // namespace keldra
