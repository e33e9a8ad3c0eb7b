#pragma once

#include <vector>

namespace Kelvor {

// Element policy of CKVArray for class objects: elements are copied by
// assignment and compared with operator==.
template <class T>
struct ArrayObjectOperator
{
    static void assign(T& target, T const& source) { target = source; }
    static bool isEqual(T const& a, T const& b) { return a == b; }
};

// An array handed from the host to the backend, read there through size()
// and operator[]; the host fills it with add().
template <class T, class Op = ArrayObjectOperator<T>>
class CKVArray
{
public:
    CKVArray() = default;

    unsigned int size() const { return static_cast<unsigned int>(mItems.size()); }
    bool isEmpty() const { return mItems.empty(); }

    // Indexing past the end is a caller error, as with any array.
    T const& operator[](unsigned int index) const { return mItems[index]; }
    T& operator[](unsigned int index) { return mItems[index]; }

    // Appends a copy; returns the new element's index.
    unsigned int add(T const& item)
    {
        mItems.emplace_back();
        Op::assign(mItems.back(), item);
        return size() - 1;
    }

    // False when the index is past the end.
    bool removeAt(unsigned int index)
    {
        if (index >= mItems.size())
            return false;
        mItems.erase(mItems.begin() + index);
        return true;
    }

    // Index of the first element equal to `item`, or -1.
    int find(T const& item) const
    {
        for (unsigned int i = 0; i < size(); ++i) {
            if (Op::isEqual(mItems[i], item))
                return static_cast<int>(i);
        }
        return -1;
    }

    void clear() { mItems.clear(); }

private:
    std::vector<T> mItems;
};

} // namespace Kelvor
