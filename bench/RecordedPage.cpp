#include "RecordedPage.h"

#include <vantu/ImageUtil.h>

#include <optional>
#include <utility>

#include "PagePainter.h"

namespace vantu::bench {
namespace {

using pdf::Call;
using pdf::Intersect;
using pdf::IsEmpty;
using pdf::Pixels;

constexpr unsigned int kWhite = 0xFFFFFFFF;

std::shared_ptr<CQorImage> MakeImage(unsigned int width, unsigned int height) {
    return std::make_shared<CQorImage>(width, height, PixelFormat::Bgra32Premultiplied, static_cast<unsigned char>(4),
                                       false);
}

std::vector<unsigned char> BytesOf(const IQorImage& image) {
    const std::size_t size = std::size_t{image.GetWidth()} * image.GetHeight() * 4;
    return {image.GetPixelData(), image.GetPixelData() + size};
}

/// Whether a group is one that every painter can have: an isolated one, or none at all.
bool IsSimple(const Call& begin, const Call& end) {
    return !IsEmpty(begin.box) && !begin.group.knockout && (begin.group.isolated || begin.group.plain) &&
           (end.paint.alpha == 255 || !end.paint.mask);
}

/// The calls that the plain loop and pixman can make, too: of groups none but simple ones.
std::vector<Call> SharedOf(const std::vector<Call>& calls) {
    std::vector<Call> shared;
    std::vector<std::size_t> begins;  // of the open groups
    for (const Call& call : calls) {
        if (call.what == Call::What::BeginGroup) begins.push_back(shared.size());
        const bool isMaskedAndTranslucent = call.paint.mask && call.paint.alpha < 255;
        if (call.what == Call::What::Draw && isMaskedAndTranslucent) continue;  // pixman has one mask
        shared.push_back(call);
        if (call.what != Call::What::EndGroup) continue;
        const auto begin = shared.begin() + static_cast<std::ptrdiff_t>(begins.back());
        begins.pop_back();
        if (!IsSimple(*begin, call)) shared.erase(begin, shared.end());
    }
    return shared;
}

Pixels PlaceOf(const IQorImage& image, const Point<int, 2>& at) {
    return {at.x, at.y, at.x + static_cast<int>(image.GetWidth()), at.y + static_cast<int>(image.GetHeight())};
}

std::shared_ptr<IQorImage> MakeColor(const Color& color) {
    const std::shared_ptr<CQorImage> image = MakeImage(1, 1);
    Color opaque = color;
    opaque.SetAlpha(255);
    ImageUtil::Clear(*image, opaque, {0, 0, 1, 1});
    return image;
}

/// A call as the plain loop and pixman make it.
/// @param bounds what can be painted. @return nothing if that is nothing.
std::optional<PageCall> ToPageCall(const Call& call, Pixels bounds) {
    PageCall out;
    out.paint = call.paint;
    out.picture = call.picture;
    out.at = call.at;
    if (call.what == Call::What::Fill) {
        bounds = Intersect(bounds, call.box);
        out.picture = MakeColor(call.color);
        out.isColor = true;
        out.paint.alpha = static_cast<unsigned char>(call.paint.alpha * call.color.GetAlpha() / 255);
    } else {
        bounds = Intersect(bounds, PlaceOf(*call.picture, call.at));
    }
    if (call.paint.mask) bounds = Intersect(bounds, PlaceOf(*call.paint.mask, call.paint.maskAt));
    if (IsEmpty(bounds) || out.paint.alpha == 0) return std::nullopt;
    out.rectangles = {bounds};
    return out;
}

/// @param visible what can be painted outside of groups.
std::vector<PageCall> ToPageCalls(const std::vector<Call>& calls, const Pixels& visible) {
    struct Group {
        Pixels bounds;
        bool isolated;
    };
    std::vector<PageCall> out;
    std::vector<Group> groups{{visible, false}};
    for (const Call& call : calls) {
        if (call.what == Call::What::BeginGroup) {
            groups.push_back({Intersect(groups.back().bounds, call.box), call.group.isolated});
            if (!call.group.isolated) continue;
            PageCall& begin = out.emplace_back();
            begin.what = PageCall::What::BeginGroup;
            begin.rectangles = {groups.back().bounds};
        } else if (call.what == Call::What::EndGroup) {
            const Group group = groups.back();
            groups.pop_back();
            if (!group.isolated) continue;
            if (out.back().what == PageCall::What::BeginGroup) {  // nothing was painted, and nothing is
                out.pop_back();
                continue;
            }
            PageCall& end = out.emplace_back();
            end.what = PageCall::What::EndGroup;
            end.paint = call.paint;
            end.at = {group.bounds.x0, group.bounds.y0};
            const auto& mask = call.paint.mask;
            end.rectangles = {mask ? Intersect(group.bounds, PlaceOf(*mask, call.paint.maskAt)) : group.bounds};
        } else if (std::optional<PageCall> painted = ToPageCall(call, groups.back().bounds)) {
            out.push_back(std::move(*painted));
        }
    }
    return out;
}

}  // namespace

std::vector<RecordedImage> RecordPage(const std::string& path, double dotsPerInch) {
    pdf::PageContext context(path);
    context.calls.Keep();
    const pdf::PageGeometry geometry = context.document.Geometry(0, dotsPerInch);
    const auto page =
        MakeImage(static_cast<unsigned int>(geometry.area.x1), static_cast<unsigned int>(geometry.area.y1));
    ImageUtil::Clear(*page, kWhite, geometry.area);
    pdf::PaintRows(context, 0, geometry, page, geometry.area);

    std::vector<RecordedImage> images;
    for (const pdf::CallList& list : context.calls.Kept()) {
        RecordedImage& image = images.emplace_back();
        image.calls = list.calls;
        image.painted = BytesOf(*list.page);
        image.shared = SharedOf(list.calls);
        image.visible = list.visible;
        image.scene.page = MakeImage(list.page->GetWidth(), list.page->GetHeight());
        image.scene.pristine.assign(image.painted.size(), list.page == page ? 255 : 0);
        image.scene.calls = ToPageCalls(image.shared, list.visible);
    }
    return images;
}

}  // namespace vantu::bench
