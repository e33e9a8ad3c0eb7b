// tarnwick-view: the reference viewer. See ViewApplication.
#include "apps/view/ViewApplication.h"
#include "binding/CKVModuleStartup.h"

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    // Nothing else in the program names the backend: this call keeps the
    // linker from dropping it, so that it loads and registers its factories.
    initOSGApplication();
    std::vector<std::string> const arguments(argv + 1, argv + argc);
    return Kelvor::ViewApplication().run(arguments);
}
