#include "TarnwickStream/CKVModelIOManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Kelvor;

namespace {

// Makes a model with one level per read and remembers the path it was given.
class FakeImporter : public CKVModelImportExport
{
public:
    explicit FakeImporter(bool* deleted = nullptr) : mDeleted(deleted) {}
    ~FakeImporter() override
    {
        if (mDeleted)
            *mDeleted = true;
    }

    bool readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) override
    {
        {
            std::lock_guard<std::mutex> lock(mutex);
            lastPath = path;
        }
        if (std::string(path).find("missing") != std::string::npos)
            return false;
        model = new CKVModelBase;
        model->addLOD(new CKVRenderLOD);
        return true;
    }

    std::string lastPath;

private:
    // Host threads may read through one importer at the same time.
    std::mutex mutex;
    bool* mDeleted;
};

// The manager is a process-wide singleton: each test cleans up its keys.
class ModelIOManager : public ::testing::Test
{
protected:
    void TearDown() override
    {
        for (char const* key : {"tst", ".tst", "alt", ".alt", "tile"})
            manager->removeImportExport(key);
    }

    CKVModelIOManager* manager = CKVModelIOManager::instance();
};

} // namespace

TEST_F(ModelIOManager, HoldsOneReferencePerKey)
{
    bool deleted = false;
    FakeImporter* importer = new FakeImporter(&deleted);
    ASSERT_TRUE(manager->addImportExport("tst", importer));
    ASSERT_TRUE(manager->addImportExport(".tst", importer));
    EXPECT_EQ(2u, importer->refCount());

    EXPECT_TRUE(manager->removeImportExport("tst"));
    EXPECT_FALSE(deleted);
    EXPECT_FALSE(manager->removeImportExport("tst"));
    EXPECT_TRUE(manager->removeImportExport(".tst"));
    EXPECT_TRUE(deleted);
}

TEST_F(ModelIOManager, ReplacingAKeyReleasesTheOldImporter)
{
    bool firstDeleted = false;
    ASSERT_TRUE(manager->addImportExport("tst", new FakeImporter(&firstDeleted)));
    kv_shared_ptr<FakeImporter> second(new FakeImporter);
    ASSERT_TRUE(manager->addImportExport("tst", second.get()));
    EXPECT_TRUE(firstDeleted);
    EXPECT_EQ(second.get(), manager->findImportExport("tst").get());

    EXPECT_FALSE(manager->addImportExport("", second.get()));
    EXPECT_FALSE(manager->addImportExport(nullptr, second.get()));
    EXPECT_FALSE(manager->addImportExport("alt", nullptr));
    EXPECT_EQ(nullptr, manager->findImportExport("alt").get());
}

TEST_F(ModelIOManager, FindsImportersByFileName)
{
    kv_shared_ptr<FakeImporter> dotted(new FakeImporter);
    kv_shared_ptr<FakeImporter> bare(new FakeImporter);
    manager->addImportExport(".tst", dotted.get());
    manager->addImportExport("alt", bare.get());

    EXPECT_EQ(dotted.get(), manager->findByPath("/data/site.TST").get());
    EXPECT_EQ(bare.get(), manager->findByPath("C:\\data\\site.alt").get());
    EXPECT_EQ(bare.get(), manager->findImportExport("ALT").get());
    EXPECT_EQ(nullptr, manager->findImportExport(".alt").get()); // keys are taken as given
    EXPECT_EQ(nullptr, manager->findByPath("/data.tst/site").get());
    EXPECT_EQ(nullptr, manager->findByPath("/data/site").get());
    EXPECT_EQ(nullptr, manager->findByPath(nullptr).get());
}

TEST_F(ModelIOManager, ReadsThroughTheImporterOfTheExtension)
{
    kv_shared_ptr<FakeImporter> importer(new FakeImporter);
    manager->addImportExport("tst", importer.get());

    kv_shared_ptr<CKVModelBase> model;
    ASSERT_TRUE(manager->readModel("/tiles/a.tst", model));
    ASSERT_TRUE(model);
    EXPECT_EQ(1u, model->getNumLOD());
    EXPECT_EQ("/tiles/a.tst", importer->lastPath);

    kv_shared_ptr<CKVModelBase> none;
    EXPECT_FALSE(manager->readModel("/tiles/missing.tst", none));
    EXPECT_FALSE(none);
    EXPECT_FALSE(manager->readModel("/tiles/a.unknown", none));

    // Writing is refused by importers that only read.
    EXPECT_FALSE(importer->writeModel(*model, "/tiles/out.tst"));
}

// Module loading and unloading on one thread while host threads look
// importers up. Run under ThreadSanitizer as part of the host tests.
TEST_F(ModelIOManager, RegistrationIsSafeAgainstConcurrentLookups)
{
    std::atomic<bool> done{false};
    std::atomic<int> reads{0};
    std::vector<std::thread> readers;
    for (int t = 0; t < 2; ++t) {
        readers.emplace_back([&] {
            while (!done.load()) {
                kv_shared_ptr<CKVModelBase> model;
                if (manager->readModel("/x/tile.tile", model) && model)
                    ++reads;
                manager->getExtensions();
            }
        });
    }
    for (int i = 0; i < 300; ++i) {
        manager->addImportExport("tile", new FakeImporter);
        manager->removeImportExport("tile");
    }
    manager->addImportExport("tile", new FakeImporter);
    while (reads.load() == 0)
        std::this_thread::yield();
    done = true;
    for (std::thread& t : readers)
        t.join();
    EXPECT_GT(reads.load(), 0);
}
