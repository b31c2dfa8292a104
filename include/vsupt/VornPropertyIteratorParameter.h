/// @class VornPropertyIteratorParameter
/// What a VornPropertyIterator is shown of one property: its name and all its
/// values, in the order they were added.
///
/// A plain value: forEach builds a fresh one, holding copies, for each
/// property it visits, so nothing done to it reaches the store. It takes no
/// lock. It stands in the global namespace, beside the iterator classes'
/// namespace, so that code of either side names it the same way.
#ifndef VSUPT_VORNPROPERTYITERATORPARAMETER_H
#define VSUPT_VORNPROPERTYITERATORPARAMETER_H

#include <vector>

template <class StringType>
class VornPropertyIteratorParameter {
public:
    VornPropertyIteratorParameter() = default;
    /// One property: its name and its values.
    VornPropertyIteratorParameter(const StringType& name, const std::vector<StringType>& values)
        : m_name(name), m_values(values)
    {
    }

    /// The property's name.
    StringType m_name;
    /// Its values, in order.
    std::vector<StringType> m_values;
};

#endif
