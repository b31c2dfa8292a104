#include <vsupt/PropertyChanged.h>

namespace VornSupport {

PropertyChanged::PropertyChanged() = default;

PropertyChanged::PropertyChanged(const std::string& name) : m_name(name) {}

PropertyChanged::~PropertyChanged() = default;

const std::string& PropertyChanged::getName() const
{
    return m_name;
}

}  // namespace VornSupport
