#pragma once

#include <string>
#include <vector>

namespace test {

/** A fresh temporary folder for one test. The destructor removes it with its contents. */
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    /** Returns the path of a file in the folder. */
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    /** Returns the names of all entries, hidden ones included, in sorted order. */
    std::vector<std::string> names() const;

  private:
    std::string path_;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);

}  // namespace test
