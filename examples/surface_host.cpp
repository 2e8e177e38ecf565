// A host that keeps its pixels in its own way, here as three planes of the inks cyan, magenta and yellow, and lets a
// painter paint on them through two functions.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <vector>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

class InkPlanes : public RasterSurface {
public:
    InkPlanes(int width, int height) : width_(width) {
        for (auto& plane : planes_) plane.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        GetPixel = [](RasterSurface* surface, int x, int y, Color& out) {
            const auto& self = static_cast<const InkPlanes&>(*surface);
            const auto paper = [&](int plane) { return 255U - self.planes_[plane][self.At(x, y)]; };
            out = ARGB_BLACK | paper(0) << 16 | paper(1) << 8 | paper(2);
        };
        SetPixel = [](RasterSurface* surface, int x, int y, const Color& in) {
            auto& self = static_cast<InkPlanes&>(*surface);
            const auto ink = [](unsigned char paper) { return static_cast<unsigned char>(255 - paper); };
            self.planes_[0][self.At(x, y)] = ink(in.GetRed());
            self.planes_[1][self.At(x, y)] = ink(in.GetGreen());
            self.planes_[2][self.At(x, y)] = ink(in.GetBlue());
        };
    }

    [[nodiscard]] const std::vector<unsigned char>& Plane(int plane) const { return planes_[plane]; }

private:
    // A painter asks for no pixel outside the bounds that it was given.
    [[nodiscard]] std::size_t At(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x);
    }

    int width_;
    std::vector<unsigned char> planes_[3];
};

void PaintOnInks() {
    const auto photograph = ReadPicture(IMAGEOP_EXAMPLE_DATA "/coffee.png");
    const int width = static_cast<int>(photograph->GetWidth());
    const int height = static_cast<int>(photograph->GetHeight());
    const auto planes = std::make_shared<InkPlanes>(width, height);
    Painter page(planes, {0, 0, width, height});
    page.Draw(photograph, {0, 0});
    page.Fill({0, 150, width, 250}, 0xFFFFFF00, {.mode = BlendMode::Multiply});

    // Yellow paper lets no blue through: full yellow ink under the strip.
    const std::size_t middle = static_cast<std::size_t>(200) * photograph->GetWidth() + photograph->GetWidth() / 2;
    std::cout << "ink under the strip: cyan " << int{planes->Plane(0)[middle]} << ", magenta "
              << int{planes->Plane(1)[middle]} << ", yellow " << int{planes->Plane(2)[middle]} << '\n';
    if (planes->Plane(2)[middle] != 255) throw std::runtime_error("the strip was not painted");
}

}  // namespace

int main() {
    try {
        PaintOnInks();
    } catch (const std::exception& error) {
        std::cerr << "surface_host: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
