#pragma once

#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVRenderContext;
class CKVRenderContextImp;
class CKVSceneNode;
class CKVSceneNodeImp;

// The checks every dispatch makes before it touches anything: whether the
// context is ours, whether a node is ours, and whether the command is the
// record the dispatch expects. Each gives null on failure, which the
// dispatch turns into a false result.
class CKVRCDispatchChecks
{
public:
    CKVRCDispatchChecks() = delete;

    static CKVRenderContextImp* context(CKVRenderContext* context);
    static CKVSceneNodeImp* sceneNode(CKVSceneNode* node);

    // A command carrying its own dispatch object may reach any dispatch, so
    // the record class is checked rather than assumed from the id.
    template <class Record>
    static Record* record(CKVRenderCommand& command)
    {
        return command.isKindOf(Record::desc()) ? static_cast<Record*>(&command) : nullptr;
    }
};

} // namespace Kelvor
