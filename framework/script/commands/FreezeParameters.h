// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/freeze/FreezeInView.h"
#include "framework/images/ImageFile.h"
#include "framework/script/Command.h"

namespace trovik {

enum class FreezeWhat { Clear, All, Invert };
template <>
struct EnumNames<FreezeWhat> {
    static constexpr std::pair<const char*, FreezeWhat> names[] = {
        {"clear", FreezeWhat::Clear}, {"all", FreezeWhat::All}, {"invert", FreezeWhat::Invert}};
};
template <>
struct EnumNames<FreezeMode> {
    static constexpr std::pair<const char*, FreezeMode> names[] = {
        {"raise", FreezeMode::Raise},
        {"replace", FreezeMode::Replace},
        {"add", FreezeMode::Add},
        {"subtract", FreezeMode::Subtract},
        {"multiply", FreezeMode::Multiply}};
};
template <>
struct EnumNames<ViewReach> {
    static constexpr std::pair<const char*, ViewReach> names[] = {{"visible", ViewReach::Visible},
                                                                  {"facing", ViewReach::Facing},
                                                                  {"through", ViewReach::Through}};
};
template <>
struct EnumNames<ViewImage::Channel> {
    static constexpr std::pair<const char*, ViewImage::Channel> names[] = {
        {"luminance", ViewImage::Channel::Luminance}, {"alpha", ViewImage::Channel::Alpha}};
};
enum class CavitySign { Cavity, Ridge, Both };
template <>
struct EnumNames<CavitySign> {
    static constexpr std::pair<const char*, CavitySign> names[] = {
        {"cavity", CavitySign::Cavity}, {"ridge", CavitySign::Ridge}, {"both", CavitySign::Both}};
};

/// An image that covers the viewport or a part of it.
struct FreezeImage {
    std::string file;
    std::optional<ViewImage::Channel> channel;
    std::optional<bool> invert;
    /// The whole viewport if missing.
    std::optional<std::array<float, 4>> over;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("channel", channel);
        visit("invert", invert);
        visit("over", over);
    }
};

struct FreezeCavity {
    std::optional<CavitySign> sign;
    std::optional<float> size;
    std::optional<float> from;
    std::optional<float> to;
    std::optional<float> softness;
    std::optional<uint32_t> rings;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("sign", sign);
        visit("size", size);
        visit("from", from);
        visit("to", to);
        visit("softness", softness);
        visit("rings", rings);
    }
};

/// A connected component, identified by one of its points.
struct FreezeComponent {
    std::optional<uint64_t> vertex;
    std::optional<Vector> surface;
    std::optional<std::array<float, 2>> pointer;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("vertex", vertex);
        visit("surface", surface);
        visit("pointer", pointer);
    }
    /// \throw FieldFault unless exactly one field is given.
    void RequireOne() const;
};

struct FreezeChoice {
    std::optional<Vector> center;
    std::optional<float> radius;
    std::optional<float> softness;
    std::optional<Vector> min;
    std::optional<Vector> max;
    std::optional<Yes> all;
    std::optional<std::array<float, 4>> box;
    std::optional<std::vector<std::array<float, 2>>> lasso;
    std::optional<FreezeImage> image;
    std::optional<FreezeCavity> cavity;
    std::optional<FreezeComponent> component;
    /// Null selects the faces without a group.
    std::optional<std::variant<std::string, std::nullptr_t>> group;
    /// Freeze amounts, one per vertex: numbers, or base64 of bytes.
    std::optional<std::variant<std::string, std::vector<uint32_t>>> values;
    std::optional<uint32_t> grow;
    std::optional<uint32_t> shrink;
    std::optional<uint32_t> blur;
    std::optional<uint32_t> sharpen;
    std::optional<ViewReach> reach;
    std::optional<FreezeMode> mode;
    std::optional<float> amount;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("center", center);
        visit("radius", radius);
        visit("softness", softness);
        visit("min", min);
        visit("max", max);
        visit("all", all);
        visit("box", box);
        visit("lasso", lasso);
        visit("image", image);
        visit("cavity", cavity);
        visit("component", component);
        visit("group", group);
        visit("values", values);
        visit("grow", grow);
        visit("shrink", shrink);
        visit("blur", blur);
        visit("sharpen", sharpen);
        visit("reach", reach);
        visit("mode", mode);
        visit("amount", amount);
    }
};

using FreezeParameters = std::variant<FreezeWhat, FreezeChoice>;

/// Returns the mask weights, from 0 to 1, for a selection that is not a filter: one weight for each
/// vertex of the current level.
std::vector<float> FreezeWeights(CommandContext& context, const FreezeChoice& choice);

/// \throw FieldFault if the image cannot be read.
FloatImage ReadFreezeImage(const CommandContext& context, const std::string& name);

}  // namespace trovik
