#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace keldra::test {

/// A folder that goes with its contents.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / ("keldra-" + std::string(6, 'X'))).string();
        m_path = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    /// Names of what is inside, hidden ones too.
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            found.push_back(entry.path().filename().string());
        return found;
    }

private:
    std::string m_path;
};

} // namespace keldra::test
