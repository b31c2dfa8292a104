#include <vsupt/VornVersion.h>
#include <vsupt/VornException.h>
#include <vsupt/VornTokenizer.h>

#include "frame/ExceptionBorder.h"

#include <algorithm>
#include <cstdlib>

namespace VornSupport {

namespace {

bool startsWithDigit(const std::string& piece)
{
    return !piece.empty() && piece[0] >= '0' && piece[0] <= '9';
}

// Digits as far as they go; whatever follows them in the piece is dropped.
int leadingNumber(const std::string& piece)
{
    return static_cast<int>(std::strtol(piece.c_str(), nullptr, 10));
}

int decide(bool firstIsLower)
{
    return firstIsLower ? VornVersion::Lower : VornVersion::Higher;
}

}  // namespace

VornVersion::VornVersion() = default;

VornVersion::VornVersion(int*) {}

VornVersion::VornVersion(const std::string& text)
{
    letOutOnly<VornException>([&] { parse(text); });
}

VornVersion::VornVersion(const VornVersion& other) = default;

VornVersion& VornVersion::operator=(const VornVersion& other)
{
    if (this != &other) {
        m_components = other.m_components;
        m_suffix = other.m_suffix;
    }
    return *this;
}

VornVersion& VornVersion::operator=(const std::string& text)
{
    return letOutOnly<VornException>([&]() -> VornVersion& {
        m_components.clear();
        m_suffix.clear();
        parse(text);
        return *this;
    });
}

VornVersion::~VornVersion() = default;

void VornVersion::parse(const std::string& text)
{
    letOutOnly<VornException>([&] {
        ::VornTokenizer<std::string> pieces(text, ".", true);
        while (pieces.hasMoreTokens()) {
            const std::string piece = pieces.next();
            if (startsWithDigit(piece)) {
                m_components.push_back(leadingNumber(piece));
            } else if (!pieces.hasMoreTokens()) {
                m_suffix = piece;
            } else {
                throw VornException("VornVersion::parse: invalid version string: " + text, 0);
            }
        }
    });
}

std::string VornVersion::toString() const
{
    std::string text;
    for (std::size_t i = 0; i < m_components.size(); ++i) {
        if (i > 0) {
            text += '.';
        }
        text += std::to_string(m_components[i]);
    }
    if (!m_suffix.empty()) {
        text += '.';
        text += m_suffix;
    }
    return text;
}

bool VornVersion::isInit() const
{
    return !m_components.empty() || !m_suffix.empty();
}

int VornVersion::compare(const VornVersion& first, const VornVersion& second)
{
    const std::vector<int>& a = first.m_components;
    const std::vector<int>& b = second.m_components;
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] != b[i]) {
            return decide(a[i] < b[i]);
        }
    }
    for (std::size_t i = common; i < a.size(); ++i) {
        if (a[i] != 0) {
            return Higher;
        }
    }
    for (std::size_t i = common; i < b.size(); ++i) {
        if (b[i] != 0) {
            return Lower;
        }
    }
    const int order = first.m_suffix.compare(second.m_suffix);
    return order == 0 ? Equal : decide(order < 0);
}

std::vector<std::pair<VornVersion, VornVersion> > VornVersion::createRangeVector(const std::string& ranges)
{
    return letOutOnly<VornException>([&] {
        std::vector<std::pair<std::string, std::string> > texts;
        ::VornTokenizer<std::string> pieces(ranges, ",", true);
        while (pieces.hasMoreTokens()) {
            const std::string piece = pieces.next();
            if (piece.empty() || piece[0] != '{') {
                texts.emplace_back(piece, std::string());
                continue;
            }
            // At least one character between "{" and "-", and one between
            // "-" and the last character, which is taken for "}" unseen.
            const std::string::size_type dash = piece.find('-');
            const std::string::size_type length = piece.size();
            if (dash == std::string::npos || dash < 2 || dash >= length - 2) {
                throw VornException("VornVersion::createRangeVector: Invalid range specification: " + ranges, 0);
            }
            texts.emplace_back(piece.substr(1, dash - 1), piece.substr(dash + 1, length - dash - 2));
        }
        std::vector<std::pair<VornVersion, VornVersion> > ranges;
        ranges.reserve(texts.size());
        for (const auto& text : texts) {
            ranges.emplace_back(VornVersion(text.first), VornVersion(text.second));
        }
        return ranges;
    });
}

bool VornVersionRange::operator()(const std::pair<VornVersion, VornVersion>& range, const VornVersion& version) const
{
    const int fromLower = VornVersion::compare(range.first, version);
    if (range.second.isInit()) {
        return (fromLower == VornVersion::Equal || fromLower == VornVersion::Lower) &&
               VornVersion::compare(version, range.second) == VornVersion::Lower;
    }
    return fromLower == VornVersion::Equal;
}

}  // namespace VornSupport
