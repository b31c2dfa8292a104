/// @class VornSupport::VornPropertyIteratorFunctor
/// The function object by which VornProperties::forEach walks its table: for
/// each entry it hands a copy of the name and the values to the iterator it
/// was made with. It holds a reference to that iterator and owns nothing.
#ifndef VSUPT_VORNPROPERTYITERATORFUNCTOR_H
#define VSUPT_VORNPROPERTYITERATORFUNCTOR_H

#include <vsupt/VornPropertyIterator.h>

#include <utility>
#include <vector>

namespace VornSupport {

template <class StringType>
class VornPropertyIteratorFunctor {
public:
    /// A function object that hands each entry to iterator.
    explicit VornPropertyIteratorFunctor(VornPropertyIterator<StringType>& iterator) : m_iterator(iterator) {}

    /// Hands one entry of the store, name and values, to the iterator.
    void operator()(const std::pair<const StringType, std::vector<StringType>>& entry) const
    {
        m_iterator.process(VornPropertyIteratorParameter<StringType>(entry.first, entry.second));
    }

private:
    VornPropertyIterator<StringType>& m_iterator;
};

}  // namespace VornSupport

#endif
