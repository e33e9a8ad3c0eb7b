#include "picking/CKVInstanceSearch.h"

#include "scene/CKVOSGGeometry.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <new>
#include <stdexcept>
#include <system_error>
#include <thread>

#ifdef __linux__
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace Kelvor {

namespace {

using Clock = std::chrono::steady_clock;

// Below this many instances the tree is built on the spot: it takes well
// under a millisecond, and a model of many small instanced geometries would
// otherwise start a thread for each.
constexpr std::size_t kWorkerInstanceCount = 8192;

// How much nicer than the process a tree worker runs. The trees of a large
// model take about a second of worker time while the first frames are drawn;
// on a machine with few cores they would take that time from the render
// thread and the rasteriser's threads. At this step the scheduler gives a
// worker about a tenth of a busy core's share, and all of an idle one, so a
// query that waits for its tree still gets it at full speed.
constexpr int kWorkerNiceStep = 10;
constexpr int kNicest = 19;

void lowerThisThreadsPriority()
{
#ifdef __linux__
    // On Linux the nice value belongs to the thread, named by its own id.
    pid_t const self = static_cast<pid_t>(syscall(SYS_gettid));
    errno = 0;
    int const current = getpriority(PRIO_PROCESS, static_cast<id_t>(self));
    if (errno == 0)
        setpriority(PRIO_PROCESS, static_cast<id_t>(self), std::min(current + kWorkerNiceStep, kNicest));
#endif
}

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

} // namespace

// What the worker shares with the search: the boxes it was given and the
// tree it hands back. The worker holds it alone when the search is gone.
struct CKVInstanceSearch::Job
{
    std::mutex mutex;
    std::condition_variable finished;
    bool done = false;
    std::vector<float> boxes;
    std::unique_ptr<CKVInstanceBVH> tree;
    double treeMs = 0.0;
};

bool CKVInstanceSearch::Key::operator==(Key const& other) const
{
    return std::memcmp(rows, other.rows, sizeof(rows)) == 0 &&
           std::memcmp(modified, other.modified, sizeof(modified)) == 0 && count == other.count &&
           std::memcmp(shape, other.shape, sizeof(shape)) == 0;
}

CKVInstanceSearch::CKVInstanceSearch() = default;

CKVInstanceSearch::~CKVInstanceSearch() = default;

bool CKVInstanceSearch::keyOf(CKVOSGGeometry const& geometry, Key& key, CKVInstanceBVH::Rows& rows)
{
    for (unsigned int r = 0; r < CKVOSGGeometry::kInstanceRowCount; ++r)
    {
        osg::Array const* row = geometry.getInstanceMatrixRow(r);
        if (!row || row->getType() != osg::Array::Vec4ArrayType)
            return false;
        rows.row[r] = static_cast<osg::Vec4Array const*>(row);
        key.rows[r] = row;
        key.modified[r] = row->getModifiedCount();
    }
    key.count = rows.count();
    for (unsigned int r = 1; r < CKVOSGGeometry::kInstanceRowCount; ++r)
    {
        if (rows.row[r]->size() < key.count)
            throw std::out_of_range("invalid vector<T> subscript");
    }
    osg::BoundingBox const shape = geometry.getVertexBound();
    float const corners[6] = {shape.xMin(), shape.yMin(), shape.zMin(), shape.xMax(), shape.yMax(), shape.zMax()};
    std::memcpy(key.shape, corners, sizeof(corners));
    return key.count > 0 && shape.valid();
}

void CKVInstanceSearch::prepare(CKVOSGGeometry const& geometry)
{
    Key key;
    CKVInstanceBVH::Rows rows;
    bool usable = false;
    try
    {
        usable = keyOf(geometry, key, rows);
    }
    catch (std::out_of_range const&)
    {
        // Broken rows fail the query that meets them, not the install.
    }
    if (!usable || (mTree && key == mKey) || (mPending && key == mPendingKey))
        return;

    auto const start = Clock::now();
    std::shared_ptr<Job> job = std::make_shared<Job>();
    job->boxes = CKVInstanceBVH::instanceBoxes(rows, geometry.getVertexBound());
    mTiming.boxesMs = millisecondsSince(start);
    if (key.count < kWorkerInstanceCount)
    {
        auto const begin = Clock::now();
        mTree.reset(new CKVInstanceBVH);
        mTree->build(job->boxes);
        mTiming.treeMs = millisecondsSince(begin);
        mKey = key;
        mPending = nullptr;
        return;
    }
    mPending = job;
    mPendingKey = key;
    try
    {
        std::thread([job] {
            lowerThisThreadsPriority();
            auto const begin = Clock::now();
            std::unique_ptr<CKVInstanceBVH> tree;
            try
            {
                tree.reset(new CKVInstanceBVH);
                tree->build(job->boxes);
            }
            catch (std::bad_alloc const&)
            {
                // The query that adopts no tree builds one itself, and
                // fails like any query that runs out of memory.
                tree.reset();
            }
            std::lock_guard<std::mutex> lock(job->mutex);
            job->boxes.clear();
            job->boxes.shrink_to_fit();
            job->tree = std::move(tree);
            job->treeMs = millisecondsSince(begin);
            job->done = true;
            job->finished.notify_all();
        }).detach();
    }
    catch (std::system_error const&)
    {
        // No thread to be had: the first query builds the tree itself.
        mPending = nullptr;
    }
}

void CKVInstanceSearch::adopt()
{
    std::unique_lock<std::mutex> lock(mPending->mutex);
    mPending->finished.wait(lock, [this] { return mPending->done; });
    mTree = std::move(mPending->tree);
    mKey = mPendingKey;
    mTiming.treeMs = mPending->treeMs;
    lock.unlock();
    mPending = nullptr;
}

CKVInstanceBVH const* CKVInstanceSearch::current(CKVOSGGeometry const& geometry)
{
    Key key;
    CKVInstanceBVH::Rows rows;
    if (!keyOf(geometry, key, rows))
        return nullptr;
    if (mPending && key == mPendingKey)
        adopt();
    else
        mPending = nullptr;
    if (mTree && key == mKey)
        return mTree.get();

    // The rows changed since the last prepare (or it never ran): the tree
    // of the new rows is made here, before the query reads it.
    auto start = Clock::now();
    std::vector<float> const boxes = CKVInstanceBVH::instanceBoxes(rows, geometry.getVertexBound());
    mTiming.boxesMs = millisecondsSince(start);
    start = Clock::now();
    if (!mTree || !mTree->refit(boxes))
    {
        mTree.reset(new CKVInstanceBVH);
        mTree->build(boxes);
    }
    mTiming.treeMs = millisecondsSince(start);
    mKey = key;
    return mTree.get();
}

} // namespace Kelvor
