// The module's entry and its list of plug-ins. No other source of the library has static objects
// that are constructed.

#include "pelk/contract/module_library.h"
#include "pelk/contract/plugin_desc.h"
#include "pelk/materials/composite/mtl_2sided.h"
#include "pelk/materials/composite/mtl_double_sided.h"
#include "pelk/materials/composite/mtl_layered_brdf.h"
#include "pelk/materials/composite/mtl_material_id.h"
#include "pelk/materials/composite/mtl_multi.h"
#include "pelk/materials/composite/mtl_override.h"
#include "pelk/materials/composite/mtl_render_stats.h"
#include "pelk/materials/matte/mtl_wrapper.h"
#include "pelk/materials/matte/mtl_wrapper_maya.h"
#include "pelk/materials/maya/mtl_bump.h"
#include "pelk/materials/maya/mtl_maya_ramp.h"
#include "pelk/materials/surface/mtl_diffuse.h"
#include "pelk/materials/surface/mtl_single_brdf.h"

namespace {

struct DescNode {
    PluginDesc* desc;
    DescNode* next;
};

/// What the library says of itself. Constructed before all descriptors and destroyed after them.
class LibDesc final : public PluginLibDesc {
public:
    ~LibDesc() override {
        while (DescNode* node = descList) {
            descList = node->next;
            delete node;
        }
    }

    /// Enters a descriptor at the head of the list.
    void enrol(PluginDesc* desc) {
        descList = new DescNode{desc, descList};
        ++descCount;
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

private:
    DescNode* descList = nullptr;
    u32 descCount = 0;
};

/// A descriptor that enters the library's list once its parameters are known.
template <class Desc>
class Enrolled final : public Desc {
public:
    explicit Enrolled(LibDesc& library) { library.enrol(this); }
};

/// Constructed from top to bottom and enumerated from bottom to top: hosts see the plug-ins in an
/// order that is fixed for good.
struct Materials {
    LibDesc libDesc;
    Enrolled<MtlWrapperDesc> wrapper{libDesc};
    Enrolled<MtlWrapperMayaDesc> wrapperMaya{libDesc};
    Enrolled<MtlSingleBRDFDesc> singleBRDF{libDesc};
    Enrolled<MtlRenderStatsDesc> renderStats{libDesc};
    Enrolled<MtlRampPluginDesc> mayaRamp{libDesc};
    Enrolled<MtlOverrideDesc> overriding{libDesc};
    Enrolled<MtlMultiDesc> multi{libDesc};
    Enrolled<MtlMaterialIDDesc> materialID{libDesc};
    Enrolled<MtlLayeredBRDFDesc> layeredBRDF{libDesc};
    Enrolled<MtlDoubleSidedDesc> doubleSided{libDesc};
    Enrolled<MtlDiffuseDesc> diffuse{libDesc};
    Enrolled<MtlBumpDesc> bump{libDesc};
    Enrolled<Mtl2SidedDesc> twoSided{libDesc};
};

ModuleLibrary<Materials> materials;

}  // namespace

/// The one name that the library exports. Valid from the end of the load until the unload. Throws
/// only if the load has run out of memory.
extern "C" PELK_API PluginLibDesc* getLibDesc() {
    return &materials.get().libDesc;
}
