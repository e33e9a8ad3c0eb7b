#pragma once

#include "picking/CKVInstanceBVH.h"

#include <osg/Referenced>

#include <memory>

namespace Kelvor {

class CKVOSGGeometry;

// The picking index of one instanced geometry, kept in step with its rows.
// When the geometry is installed or its instances change, `prepare` takes
// the instance boxes on the calling (render) thread and builds the tree on a
// worker, so that no frame waits for it (a small tree is built there and
// then). A query asks `current`, which
// answers for the rows as they are at that moment: it adopts the worker's
// tree when that was made from the same rows (waiting for it if need be),
// and otherwise refits or rebuilds on the spot. Rows are told apart by their
// arrays and the arrays' modification counts, so an update that skipped
// `prepare` still never leaves a stale tree in use.
class CKVInstanceSearch : public osg::Referenced
{
public:
    struct Timing
    {
        // Instance boxes from the rows, on the thread that asked.
        double boxesMs = 0.0;
        // The tree, on the worker or, for a refit, on the thread that asked.
        double treeMs = 0.0;
    };

    CKVInstanceSearch();

    void prepare(CKVOSGGeometry const& geometry);
    // Null when the geometry has no complete rows: then every instance is
    // a candidate. Throws std::out_of_range when a row is shorter than the
    // first, as reading the matrices does.
    CKVInstanceBVH const* current(CKVOSGGeometry const& geometry);

    // Of the last tree made, refitted or adopted.
    Timing lastTiming() const { return mTiming; }
    // True while a worker build has not been adopted yet.
    bool building() const { return mPending != nullptr; }

protected:
    ~CKVInstanceSearch() override;

private:
    struct Key
    {
        void const* rows[4] = {};
        unsigned int modified[4] = {};
        std::size_t count = 0;
        float shape[6] = {};

        bool operator==(Key const& other) const;
    };
    struct Job;

    // False when the rows are missing or not four-float arrays.
    static bool keyOf(CKVOSGGeometry const& geometry, Key& key, CKVInstanceBVH::Rows& rows);
    void adopt();

    Key mKey;
    std::unique_ptr<CKVInstanceBVH> mTree;
    Key mPendingKey;
    std::shared_ptr<Job> mPending;
    Timing mTiming;
};

} // namespace Kelvor
