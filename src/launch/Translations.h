#pragma once

namespace keldra {

/// Gives the application the words of its user's language: Qt's own, and ours from the catalogues in the program. Where
/// there is none for that language, or for a word, this desktop's English is used. After the QCoreApplication is made.
void installTranslations();

} // namespace keldra
