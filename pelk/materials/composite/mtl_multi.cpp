#include "pelk/materials/composite/mtl_multi.h"

#include <algorithm>

#include "pelk/base/truncate.h"
#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"

namespace {

using P = MultiParams;

constexpr ParamTable kParams{
    pairListParam<MaterialInterface, P>(
        "mtls",
        "(Deprecated; use mtls_list/ids_list instead). A list of two-element lists "
        "with the material id and the material plugin."),
    pluginListParam<MaterialInterface>("mtls_list", &P::mtlsList, "A list of the materials."),
    intListParam<P>("ids_list", 0, "A list of material IDs"),
    stringListParam<P>("shader_sets_list",
                       "A list of shader set names to be matched to the materials."),
    textureIntParam("mtlid_gen", &P::mtlidGen,
                    "An integer texture that generates material ids; if not present, neither "
                    "mtlid_gen_float is present then surface material id will be used."),
    textureFloatParam("mtlid_gen_float", &P::mtlidGenFloat,
                      "A float texture that generates material ids; if not present, neither "
                      "mtlid_gen is present then surface material id will be used."),
    boolParam("wrap_id", &P::wrapId, false,
              "true to wrap the material ID's to the largest specified ID for the material"),
};

/// The number of sub-materials that the descriptor text has room for.
constexpr int kDescribed = 10;

RTMtlInterface* describedBy(const MtlMultiEntry& entry) {
    return entry.mtl ? findRTMtl(entry.mtl->getPlugin()) : nullptr;
}

int opaqueFlagsOf(const MtlMultiEntry& entry) {
    PluginBase* plugin = entry.mtl->getPlugin();
    return plugin ? Tarnkit::opaqueFlagsOf(plugin) : kOpaqueToShadows;
}

}  // namespace

void PickCache::resize(int numThreads) {
    destroy();
    lists = std::vector<List>(std::max(numThreads, 0));
}

void PickCache::reset() {
    for (List& list : lists) {
        for (Pick& pick : list)
            pick.stamp = 0;
    }
}

int PickCache::find(const PelkContext& context) const {
    if (lists.empty() || context.hitID == 0)
        return -1;
    const List& list = lists[context.threadData->threadIndex];
    if (context.traceDepth >= list.size())
        return -1;
    const Pick& pick = list[context.traceDepth];
    return pick.stamp == context.hitID ? pick.position : -1;
}

void PickCache::store(const PelkContext& context, int position) {
    if (lists.empty())
        return;
    List& list = lists[context.threadData->threadIndex];
    if (context.traceDepth >= list.size())
        list.resize(context.traceDepth + 1);
    list[context.traceDepth] = {context.hitID, position};
}

ParamRows<MultiParams> MultiParams::table() {
    return kParams;
}

void MtlMulti::renderBegin(PelkRenderer& renderer) {
    pickCache.resize(renderer.sequenceData.numThreads);
}

void MtlMulti::renderEnd(PelkRenderer&) {
    pickCache.destroy();
}

void MtlMulti::frameBegin(PelkRenderer& renderer) {
    PelkRTMaterial::frameBegin(renderer);
    if (pickCache.isEmpty())
        pickCache.resize(renderer.sequenceData.numThreads);
    pickCache.reset();
    freeTable();
    shaderSetIndex.clear();
    useShaderSets = false;

    const double time = renderer.frameData.frameTime;
    PelkPluginParameter* pairs = paramList.getParam("mtls");
    if (!pairs || pairs->getCount(time) < 0)
        return addEntries(renderer);
    if (MessageLog* log = renderer.sequenceData.log)
        log->warning(
            "MtlMulti (%s) \"mtls\" parameter is deprecated; use \"mtls_list\" and \"ids_list\" "
            "instead.\n",
            getPluginNameOr("noname"));
    addPairs(*pairs, time);
}

void MtlMulti::frameEnd(PelkRenderer&) {
    freeTable();
}

void MtlMulti::freeTable() {
    table.free();
    maxId = -1;
}

void MtlMulti::addEntry(int id, PluginBase* plugin) {
    maxId = std::max(maxId, id);
    table.append(
        {id, findInterface<MaterialInterface>(plugin), findInterface<BSDFInterface>(plugin)});
}

void MtlMulti::addPairs(PelkPluginParameter& pairs, double time) {
    const int count = pairs.getCount(time);
    for (int i = 0; i < count; ++i) {
        const int token = pairs.openItem(i);
        if (token < 0)
            continue;
        const int id = pairs.getInt(0, time);
        PluginBase* const plugin = pairs.getObject(1, time);
        pairs.closeItem(token);
        addEntry(id, plugin);
        // The id has counted for maxId all the same.
        if (!table[table.size() - 1].mtl)
            table.resize(table.size() - 1);
    }
}

void MtlMulti::addEntries(PelkRenderer& renderer) {
    const int count = params.mtlsList.count;
    if (count <= 0) {
        if (MessageLog* log = renderer.sequenceData.log)
            log->warning("MtlMulti (%s) has no sub-materials.\n", getPluginNameOr("noname"));
        return;
    }
    indexShaderSets(renderer);
    const PelkIntList ids = readIds(renderer);
    for (int i = 0; i < count; ++i)
        addEntry(i < ids.count ? ids.items[i] : i, params.mtlsList.items[i]);
}

void MtlMulti::indexShaderSets(PelkRenderer& renderer) {
    PelkPluginParameter* names = paramList.getParam("shader_sets_list");
    if (!names)
        return;
    const double time = renderer.frameData.frameTime;
    const int count = names->getCount(time);
    useShaderSets = count > 0;
    // Names without a material of their own are left out, and count as unknown.
    for (int i = 0; i < std::min(count, params.mtlsList.count); ++i) {
        if (const char* setName = names->getString(i, time))
            shaderSetIndex.insert(renderer.getStringTable()->intern(setName).id, i);
    }
}

/// The ids that are given, with a message if they don't cover the materials.
PelkIntList MtlMulti::readIds(PelkRenderer& renderer) {
    PelkPluginParameter* parameter = paramList.getParam("ids_list");
    MessageLog* log = renderer.sequenceData.log;
    if (!parameter) {
        if (log && !useShaderSets)
            log->warning("MtlMulti (%s) has no ids_list parameter.\n", getPluginNameOr("noname"));
        return {};
    }
    const PelkIntList ids = parameter->getIntList(renderer.frameData.frameTime);
    if (log && ids.count < params.mtlsList.count)
        log->warning("MtlMulti \"%s\" has more materials (%i) than ids (%i).\n",
                     getPluginNameOr("noname"), params.mtlsList.count, ids.count);
    return ids;
}

/// With no id above -1 there is nothing to wrap around.
int MtlMulti::wrapped(int id) const {
    return params.wrapId && maxId >= 0 && id > maxId ? id % (maxId + 1) : id;
}

int MtlMulti::findID(int id) const {
    for (int i = 0; i < table.size(); ++i) {
        if (table[i].id == id)
            return i;
    }
    return -1;
}

int MtlMulti::pick(PelkContext& context) const {
    if (useShaderSets)
        return pickShaderSet(context);
    return std::max(findID(wrapped(surfaceID(context))), 0);
}

int MtlMulti::pickShaderSet(PelkContext& context) const {
    auto* sets = findInterface<ShaderSetInterface>(context.hitObject);
    if (!sets)
        return 0;
    StringHandle setName;
    sets->getShaderSetName(setName, context, 0);
    const int* position = setName.id != 0 ? shaderSetIndex.find(setName.id) : nullptr;
    return position ? *position : 0;
}

int MtlMulti::surfaceID(PelkContext& context) const {
    if (params.mtlidGen)
        return params.mtlidGen->getTexInt(context);
    if (params.mtlidGenFloat)
        return truncateToInt(params.mtlidGenFloat->getTexFloat(context) + 0.5f);
    auto* ids = findInterface<SurfaceMtlIDInterface>(context.hitObject);
    return ids ? ids->getSurfaceMtlID(context) : 0;
}

const MtlMultiEntry* MtlMulti::pickEntry(PelkContext& context) const {
    return table.isEmpty() ? nullptr : &table[pick(context)];
}

void MtlMulti::shade(PelkContext& context) {
    const MtlMultiEntry* entry = pickEntry(context);
    if (!entry || !entry->mtl)
        return setOpaqueBlack(context);
    callShade(*entry->mtl, context);
}

BSDFSampler* MtlMulti::getBSDF(PelkContext& context, int flags) {
    if (table.isEmpty())
        return nullptr;
    int position = pickCache.find(context);
    if (position < 0) {
        position = pick(context);
        pickCache.store(context, position);
    }
    BSDFInterface* bsdf = table[position].bsdf;
    return bsdf ? takeSampler(*bsdf, context, flags) : nullptr;
}

void MtlMulti::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler || table.isEmpty())
        return;
    const int cached = pickCache.find(context);
    if (BSDFInterface* bsdf = table[cached < 0 ? pick(context) : cached].bsdf)
        giveSampler(*bsdf, context, sampler);
}

int MtlMulti::getMaterialID(PelkContext& context) {
    const MtlMultiEntry* entry = pickEntry(context);
    return entry && entry->mtl ? entry->mtl->getMaterialID(context) : 0;
}

int MtlMulti::getOpaqueFlags() {
    for (const MtlMultiEntry& entry : table) {
        if (entry.mtl && !(opaqueFlagsOf(entry) & kOpaqueToShadows))
            return 0;
    }
    return kOpaqueToShadows;
}

int MtlMulti::getSubMtlID(int index) {
    return index >= 0 && index < table.size() ? table[index].id : -1;
}

RTMtlInterface* MtlMulti::getSubMtlByID(int id) {
    return getSubMtl(findID(wrapped(id)));
}

RTMtlInterface* MtlMulti::getSubMtl(int index) {
    return index >= 0 && index < table.size() ? describedBy(table[index]) : nullptr;
}

int MtlMulti::collectSubMtls(RTMtlList& list) {
    int count = 0;
    for (const MtlMultiEntry& entry : table) {
        if (RTMtlInterface* described = describedBy(entry)) {
            list.append(described);
            ++count;
        }
    }
    return count;
}

int MtlMulti::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                                ShaderSource& source, OCLData& data) {
    if (!isSection(kind, kMaterialSection))
        return 0;
    if (params.mtlidGen || params.mtlidGenFloat) {
        writeSwitch({owner, sourceName, kind, source, data});
    } else {
        source.printf("mtlmulti_wrap %d\n", params.wrapId);
        source.printf("mtlmulti_maxID %d\n", maxId);
    }
    return 1;
}

/// The switch carries the offsets of its layers in a transformation's place, as floats.
void MtlMulti::writeSwitch(const SourceArgs& args) const {
    LayerPosition positions[kDescribed];
    for (int i = 0; i < std::min(kDescribed, params.mtlsList.count); ++i)
        positions[i].plugin = params.mtlsList.items[i];
    ShaderSource layers;
    int offsets[kDescribed];
    writeBlocksWithOffsets(positions, SamePlugin::WrittenAgain, args, layers, offsets);

    ShaderSource& source = args.source;
    source.append("mtl_switch\nemission\nuvw_transform ");
    for (const int offset : offsets)
        source.printf("%f,", static_cast<float>(offset));
    source.printf("%f,%f\n", 0.0, 0.0);
    source.append("diffuse\n");
    PluginInterface* texture = params.mtlidGen;
    if (!texture)
        texture = params.mtlidGenFloat;
    RTTexInterface::getRTTexSource(texture, "color", args.name, args.kind, source, args.data);
    source.append(layers);
}
