#include "python/keyword_docs.h"

#include "python/keyword_values.h"

namespace py = pybind11;

namespace {

// A Python literal of a property's value.
std::string literal(const Parameter& p, double value)
{
    if (p.isList())
        return "'" + formatParameterValue(p, value) + "'";
    if (p.isFlag())
        return value != 0.0 ? "True" : "False";
    const std::string text = formatNumber(value);
    return p.isInteger() || text.find_first_of(".e") != std::string::npos ? text : text + ".0";
}

std::string defaultLiteral(const Keyword& k)
{
    switch (k.kind) {
    case KeywordKind::Property:
        return k.property->isList() ? "'" + k.choice + "'" : literal(*k.property, k.property->defaultValue);
    case KeywordKind::PixelAspect:
        return "1.0";
    default:
        return "None";  // a position: its halves' defaults; no aperture; no preset
    }
}

std::string typeLine(const Keyword& k)
{
    const std::string dflt = ", default " + defaultLiteral(k);
    switch (k.kind) {
    case KeywordKind::Position:
        return "(float, float), each " + describeRange(*k.property) + ", default (" +
               literal(*k.property, k.property->defaultValue) + ", " +
               literal(*k.propertyY, k.propertyY->defaultValue) + ")";
    case KeywordKind::PixelAspect:
        return "float, above 0" + dflt;
    case KeywordKind::Aperture:
        return "ndarray, optional";
    case KeywordKind::Preset:
        return "str or os.PathLike, optional";
    case KeywordKind::Property:
        break;
    }
    const Parameter& p = *k.property;
    if (p.isList()) {
        std::string names;
        for (size_t i = 0; i < p.listEntries.size(); ++i)
            names += (i ? ", '" : "'") + formatParameterValue(p, static_cast<double>(i)) + "'";
        return "{" + names + "}" + dflt;
    }
    if (p.isFlag())
        return "bool" + dflt;
    return std::string(p.isInteger() ? "int" : "float") + (p.hasRange ? ", " + describeRange(p) : "") + dflt;
}

std::string description(const Keyword& k)
{
    switch (k.kind) {
    case KeywordKind::Position:
        return k.property->longName + " and " + k.propertyY->longName + " as one pair (x, y); " + k.name +
               "_x and " + k.name + "_y set them one at a time.";
    case KeywordKind::PixelAspect:
        return "Width over height of a pixel of the image, as a host tells the effect.";
    case KeywordKind::Aperture:
        return "The picture the 'image' shape cuts its aperture from (the effect's Spread input): H x W, "
               "or H x W x C, of uint8, uint16 or float32, the image's height and width. Without it the "
               "aperture is cut from the image itself.";
    case KeywordKind::Preset:
        return "A JSON preset of the effect (Effect.save_preset, lumenveil render --save-preset), loaded "
               "first; the other keywords apply over it.";
    case KeywordKind::Property:
        break;
    }
    if (!k.aliasOf.empty())
        return "Another name of " + k.aliasOf + ": " + k.property->longName + ".";
    return k.property->longName + " (the effect's " + k.property->name + " property" +
           (k.property->animated ? ", animatable" : "") + ").";
}

py::object pythonDefault(const Keyword& k)
{
    switch (k.kind) {
    case KeywordKind::Property:
        return k.property->isList() ? py::str(k.choice) : pythonValue(*k.property, k.property->defaultValue);
    case KeywordKind::Position:
        return py::make_tuple(k.property->defaultValue, k.propertyY->defaultValue);
    case KeywordKind::PixelAspect:
        return py::float_(1.0);
    default:
        return py::none();
    }
}

}  // namespace

py::dict describeKeywords(const std::vector<Keyword>& table)
{
    py::dict all;
    for (const Keyword& k : table) {
        py::dict entry;
        const Parameter* p = k.property;
        entry["default"] = pythonDefault(k);
        const bool ranged = p && p->hasRange && !p->isList() && !p->isFlag();
        entry["minimum"] = ranged ? pythonValue(*p, p->minimum) : py::none();
        entry["maximum"] = ranged ? pythonValue(*p, p->maximum) : py::none();
        py::list choices;
        for (size_t i = 0; p && i < p->listEntries.size(); ++i)
            choices.append(formatParameterValue(*p, static_cast<double>(i)));
        entry["choices"] = p && p->isList() ? py::object(py::tuple(choices)) : py::none();
        entry["animated"] = py::bool_(p && p->animated);
        if (k.kind == KeywordKind::Position)
            entry["property"] = py::make_tuple(p->name, k.propertyY->name);
        else
            entry["property"] = p ? py::object(py::str(p->name)) : py::none();
        entry["description"] = description(k);
        all[py::str(k.name)] = entry;
    }
    return all;
}

std::string keywordSignature(const std::vector<Keyword>& table)
{
    std::string text;
    for (const Keyword& k : table)
        text += (text.empty() ? "" : ", ") + k.name + "=" + defaultLiteral(k);
    return text;
}

std::string keywordEntries(const std::vector<Keyword>& table)
{
    std::string text;
    for (const Keyword& k : table)
        text += k.name + " : " + typeLine(k) + "\n    " + description(k) + "\n";
    return text;
}
