#pragma once

#include <string>
#include <vector>

namespace test {

/** A folder of its own for one test, removed with all that is in it. */
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    /** The path of a file in it. */
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    /** The names of everything in it, hidden files too, in order. */
    std::vector<std::string> names() const;

  private:
    std::string path_;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);

}  // namespace test
