#pragma once

#include <osgGA/GUIEventHandler>

namespace Kelvor {

class CKVEvent;
class CKVScene;

// Translates OpenSceneGraph window events into the host's CKVEvent and the
// matching CKVScene input call. Whoever feeds window input to the host
// installs it; the render context's viewer runs no event traversal.
class CKVGUIEventHandler : public osgGA::GUIEventHandler
{
public:
    CKVGUIEventHandler();
    explicit CKVGUIEventHandler(CKVScene* scene);
    CKVGUIEventHandler(CKVGUIEventHandler const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    META_Object(kvosg, CKVGUIEventHandler)

    // Not owned.
    void setScene(CKVScene* scene) { mScene = scene; }
    CKVScene* getScene() const { return mScene; }

    using osgGA::GUIEventHandler::handle;
    bool handle(osgGA::GUIEventAdapter const& event, osgGA::GUIActionAdapter& adapter, osg::Object* object,
                osg::NodeVisitor* visitor) override;

protected:
    ~CKVGUIEventHandler() override;

private:
    void fillPosition(osgGA::GUIEventAdapter const& event, CKVEvent& out) const;
    static void translateKey(int key, CKVEvent& out);

    CKVScene* mScene = nullptr;
};

} // namespace Kelvor
