#include "report.h"

#include <filesystem>

#include "failure.h"
#include "output_file.h"
#include "picture.h"
#include "report_page.h"
#include "report_pictures.h"

namespace sonivex_tool {
namespace {

void writeFile(const std::string& path, const std::string& bytes, bool replace) {
    OutputFile file(path, replace);
    // The buffer takes an int; a page is far below its limit.
    avio_write(file.io(), reinterpret_cast<const unsigned char*>(bytes.data()),
               static_cast<int>(bytes.size()));
    file.commit();
}

std::string picturePath(const std::string& folder, const ReportPicture& picture) {
    return (std::filesystem::path(folder) / (picture.name + ".png")).string();
}

void makeFolder(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        throw Failure(ExitCode::OutputNotWritable, "cannot make the folder \"" + folder + "\"");
}

}  // namespace

ReportResult makeReport(const ReportSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                        Console& console) {
    // Measuring takes long, so what would be refused after it is refused before.
    if (!settings.page.empty()) OutputFile::check(settings.page, settings.replace);
    if (!settings.picture_folder.empty()) makeFolder(settings.picture_folder);
    ReportResult result;
    result.report = measureReport(settings, plugin, console);
    const std::vector<PictureGroup> groups = picturesOf(result.report);
    if (!settings.picture_folder.empty()) {
        for (const PictureGroup& group : groups) {
            for (const ReportPicture& picture : group.pictures) {
                const std::string path = picturePath(settings.picture_folder, picture);
                OutputFile::check(path, settings.replace);
                writeFile(path,
                          sonivex_plotting::pictureFile(sonivex_plotting::PictureFormat::Png, picture.width,
                                                        picture.height, "Sonivex report: " + picture.name,
                                                        picture.draw),
                          settings.replace);
                result.picture_paths.push_back(path);
            }
        }
    }
    if (!settings.page.empty()) {
        const std::string page = pageOf(result.report, groups);
        result.page_bytes = page.size();
        writeFile(settings.page, page, settings.replace);
    }
    return result;
}

}  // namespace sonivex_tool
