// The module's entry and its list of plug-ins. All static objects of the library stand in this one
// source, since the order of static objects is certain only within one.

#include "composite/mtl_2sided.h"
#include "composite/mtl_double_sided.h"
#include "composite/mtl_layered_brdf.h"
#include "composite/mtl_material_id.h"
#include "composite/mtl_multi.h"
#include "composite/mtl_override.h"
#include "composite/mtl_render_stats.h"
#include "frame/plugin_desc.h"
#include "matte/mtl_wrapper.h"
#include "matte/mtl_wrapper_maya.h"
#include "surface/mtl_diffuse.h"
#include "surface/mtl_single_brdf.h"

namespace {

struct DescNode {
    PluginDesc* desc;
    DescNode* next;
};

// Zero before any constructor runs, so that a descriptor may enter at any time of the load.
constinit DescNode* descList = nullptr;
constinit u32 descCount = 0;

/// What the library says of itself. Constructed before all descriptors and destroyed after them.
class LibDesc final : public PluginLibDesc {
public:
    ~LibDesc() override {
        while (DescNode* node = descList) {
            descList = node->next;
            delete node;
        }
    }

    const char* getLibraryName() override { return "Materials"; }
    const char* getLibraryDescription() override { return "Pelk Materials"; }

    int enumPluginDescs(EnumPluginDescCallback* callback) override {
        if (!callback)
            return static_cast<int>(descCount);
        int visited = 0;
        for (const DescNode* node = descList; node; node = node->next) {
            ++visited;
            if (!callback->process(node->desc))
                break;
        }
        return visited;
    }
};

/// A descriptor that enters the library's list, at its head, once its parameters are known.
template <class Desc>
class Enrolled final : public Desc {
public:
    Enrolled() {
        ++descCount;
        descList = new DescNode{this, descList};
    }
};

// Constructed from top to bottom and enumerated from bottom to top: hosts see the plug-ins in an
// order that is fixed for good.
LibDesc libDesc;
Enrolled<MtlWrapperDesc> wrapperDesc;
Enrolled<MtlWrapperMayaDesc> wrapperMayaDesc;
Enrolled<MtlSingleBRDFDesc> singleBRDFDesc;
Enrolled<MtlRenderStatsDesc> renderStatsDesc;
Enrolled<MtlOverrideDesc> overrideDesc;
Enrolled<MtlMultiDesc> multiDesc;
Enrolled<MtlMaterialIDDesc> materialIDDesc;
Enrolled<MtlLayeredBRDFDesc> layeredBRDFDesc;
Enrolled<MtlDoubleSidedDesc> doubleSidedDesc;
Enrolled<MtlDiffuseDesc> diffuseDesc;
Enrolled<Mtl2SidedDesc> twoSidedDesc;

}  // namespace

/// The one name that the library exports. Valid from the end of the load until the unload.
extern "C" PELK_API PluginLibDesc* getLibDesc() {
    return &libDesc;
}
