#include "picture.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>

#include "cairo_canvas.h"
#include "drawing_library.h"
#include "element_canvas.h"
#include "png_title.h"

namespace sonivex_plotting {
namespace {

constexpr double kPointsPerPixel = 72.0 / 96.0;

// Appends bytes to the string that `file` points to.
cairo_status_t append(void* file, const unsigned char* bytes, unsigned int count) {
    try {
        static_cast<std::string*>(file)->append(reinterpret_cast<const char*>(bytes), count);
    } catch (const std::exception&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

// `file` receives the bytes of the vector formats and must outlive the surface.
Surface makeSurface(PictureFormat format, int width, int height, const std::string& title,
                    std::string& file) {
    switch (format) {
        case PictureFormat::Png:
            return Surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
        case PictureFormat::Svg: {
            Surface surface(cairo_svg_surface_create_for_stream(append, &file, width, height));
            cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
            return surface;
        }
        case PictureFormat::Pdf: {
            Surface surface(cairo_pdf_surface_create_for_stream(append, &file, width * kPointsPerPixel,
                                                                height * kPointsPerPixel));
            cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, title.c_str());
            return surface;
        }
    }
    throw std::logic_error("unknown picture format");
}

// The library draws the letters of an SVG file as shapes, so the words would be nowhere in it.
std::string withSvgTitle(const std::string& svg, const std::string& title) {
    const std::size_t root = svg.find("<svg ");
    const std::size_t end = root == std::string::npos ? root : svg.find('>', root);
    if (end == std::string::npos) throw std::runtime_error("cannot draw the picture: not an SVG file");
    return svg.substr(0, end + 1) + "\n<title>" + escapedText(title) + "</title>" + svg.substr(end + 1);
}

}  // namespace

std::optional<PictureFormat> pictureFormatOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (extension == ".png") return PictureFormat::Png;
    if (extension == ".svg") return PictureFormat::Svg;
    if (extension == ".pdf") return PictureFormat::Pdf;
    return std::nullopt;
}

std::string pictureFile(PictureFormat format, int width, int height, const std::string& title,
                        const std::function<void(Canvas&)>& draw) {
    std::string file;
    const Surface surface = makeSurface(format, width, height, title, file);
    {
        const DrawingContext context(cairo_create(surface.get()));
        if (format == PictureFormat::Pdf) cairo_scale(context.get(), kPointsPerPixel, kPointsPerPixel);
        CairoCanvas canvas(context.get());
        canvas.fill({0.0, 0.0, static_cast<double>(width), static_cast<double>(height)}, kWhite);
        draw(canvas);
        throwIfFailed(cairo_status(context.get()));
    }
    if (format == PictureFormat::Png) {
        throwIfFailed(cairo_surface_write_to_png_stream(surface.get(), append, &file));
        return withPngTitle(file, title);
    }
    cairo_surface_finish(surface.get());
    throwIfFailed(cairo_surface_status(surface.get()));
    return format == PictureFormat::Svg ? withSvgTitle(file, title) : file;
}

std::string pictureElement(int width, int height, const std::string& description,
                           const std::function<void(Canvas&)>& draw) {
    ElementCanvas canvas;
    draw(canvas);
    return "<svg class=\"plot\" role=\"img\" viewBox=\"0 0 " + std::to_string(width) + " " +
           std::to_string(height) + "\" aria-label=\"" + escapedText(description) + "\">\n" +
           canvas.elements() + "</svg>\n";
}

std::string greyPng(const GreyImage& image) {
    if (image.width <= 0 || image.height <= 0) return "";
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_A8, image.width, image.height));
    throwIfFailed(cairo_surface_status(surface.get()));
    cairo_surface_flush(surface.get());
    unsigned char* pixels = cairo_image_surface_get_data(surface.get());
    const auto width = static_cast<std::size_t>(image.width);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    for (std::size_t row = 0; row < static_cast<std::size_t>(image.height); ++row)
        std::memcpy(pixels + row * stride, image.values.data() + row * width, width);
    cairo_surface_mark_dirty(surface.get());
    std::string file;
    throwIfFailed(cairo_surface_write_to_png_stream(surface.get(), append, &file));
    return file;
}

}  // namespace sonivex_plotting
