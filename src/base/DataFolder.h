#pragma once

#include <string>

namespace keldra {

/// Where the program keeps what belongs to its user: `KELDRA` in KELDRA_DATA_HOME, else in the user's data folder
/// (XDG_DATA_HOME, else .local/share of the home folder). Nobody has made it yet.
std::string dataFolder();

} // namespace keldra
