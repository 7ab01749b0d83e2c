// A host of one's own: it learns the published classes, makes objects of them, and sets and reads their properties.
// Prints:
//    TimeDomainTriggerController has 18 properties
//    its Level is 1.5
#include "BareHost.h"

#include <tracery/host/Arrays.h>
#include <tracery/host/Publish.h>

#include <cstdio>
#include <map>

using namespace tracery::hostobj;
using namespace tracery;

namespace {
struct Class : ClassDefinition {
    void superclass(const COSNameID&) override {}
    void addProperty(std::unique_ptr<const COSPropInfo> p) override { properties[p->getName().text()] = std::move(p); }
    void addMethod(std::unique_ptr<const COSMethodInfo>) override {} // calls are like that of the constructor
    void addConstructor(std::unique_ptr<const COSMethodInfo> c) override { constructor = std::move(c); }
    void addInheritedMethod(const COSNameID&) override {}
    std::map<std::string, std::unique_ptr<const COSPropInfo>> properties;
    std::unique_ptr<const COSMethodInfo> constructor;
    std::unique_ptr<const COSClassInfo> info;
};
struct PublishedObject : COSInterface {
    const char* className() const override { return "a published class"; }
    bool isA(const COSNameID&) const override { return false; }
    std::shared_ptr<InstancePayload> payload() const override { return libraryObject; }
    std::shared_ptr<InstancePayload> libraryObject;
};
struct OwnHost : BareHost {
    void addClass(std::unique_ptr<const COSClassInfo> info) override
    {
        Class& made = classes[info->getName().text()];
        info->defineClass(made);
        made.info = std::move(info);
    }
    std::map<std::string, Class> classes;
};
} // namespace

int main()
{
    OwnHost host;
    const HostScope attached(host);
    publishClasses(host.objects());
    const Class& controller = host.classes.at("TimeDomainTriggerController");
    std::printf("TimeDomainTriggerController has %zu properties\n", controller.properties.size());

    const auto object = std::make_shared<PublishedObject>();
    object->libraryObject = controller.info->createInstance(object);
    const HostArrayPtr self = omCreateScalar(object);
    controller.constructor->invoke(std::vector<const HostArray*>{self.get()}, 0); // its own inputs would follow
    controller.properties.at("Level")->setValue(object, makeScalar(1.5).get());
    const HostArrayPtr value(controller.properties.at("Level")->getValue(object));
    const double level = realValues(value.get())[0];
    return std::printf("its Level is %g\n", level) > 0 && level == 1.5 ? 0 : 1;
}
