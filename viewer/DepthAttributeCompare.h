#pragma once

#include <osg/Object>

#include <cstring>

namespace Kelvor {

// Ordering shared by DepthFunc, DepthMask and DepthRange. State sets sort
// and merge attributes through compare(), so the order has to be total and
// stable: the same object first, then the class by name (classes are told
// apart by name in this backend, not by run-time casts), then the fields.

inline bool sameClass(osg::Object const& lhs, osg::Object const& rhs)
{
    return std::strcmp(lhs.className(), rhs.className()) == 0
        && std::strcmp(lhs.libraryName(), rhs.libraryName()) == 0;
}

// 0 when both are of one class (the caller then compares fields).
inline int compareClass(osg::Object const& lhs, osg::Object const& rhs)
{
    if (&lhs == &rhs)
        return 0;
    int order = std::strcmp(lhs.className(), rhs.className());
    if (order == 0)
        order = std::strcmp(lhs.libraryName(), rhs.libraryName());
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

template <typename T>
int compareValue(T const& lhs, T const& rhs)
{
    if (lhs < rhs)
        return -1;
    if (rhs < lhs)
        return 1;
    return 0;
}

} // namespace Kelvor
