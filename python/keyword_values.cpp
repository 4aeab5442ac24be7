#include "python/keyword_values.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>

#include "embed/errors.h"

namespace py = pybind11;

namespace {

std::string typeName(const py::handle& value) { return py::type::of(value).attr("__name__").cast<std::string>(); }

bool isBool(const py::handle& value)
{
    return py::isinstance<py::bool_>(value) || typeName(value) == "bool_";
}

// A real number (int, float, a NumPy scalar), not a bool or a string.
bool isNumber(const py::handle& value)
{
    return !isBool(value) && !py::isinstance<py::str>(value) && PyNumber_Check(value.ptr()) &&
           py::hasattr(value, "__float__");
}

double pixelAspectValue(const py::handle& value)
{
    if (!isNumber(value))
        throw py::type_error("pixel_aspect takes a number, not " + typeName(value));
    const double aspect = value.cast<double>();
    if (!(aspect > 0.0) || !std::isfinite(aspect))
        throw UsageError("pixel_aspect: " + formatNumber(aspect) + " is not a number above 0");
    return aspect;
}

void readPosition(EffectValues& values, const Keyword& k, const py::handle& value)
{
    if (!py::isinstance<py::sequence>(value) || py::isinstance<py::str>(value) || py::len(value) != 2)
        throw py::type_error(k.name + " takes a pair (x, y), not " + typeName(value));
    const py::sequence pair = py::reinterpret_borrow<py::sequence>(value);
    values.properties.emplace_back(k.property, propertyValue(*k.property, pair[0], k.name + " x"));
    values.properties.emplace_back(k.propertyY, propertyValue(*k.propertyY, pair[1], k.name + " y"));
}

[[noreturn]] void raiseOSError(int error, const py::handle& path)
{
    errno = error;
    PyErr_SetFromErrnoWithFilenameObject(PyExc_OSError, path.ptr());
    throw py::error_already_set();
}

std::string fileName(const py::handle& path)
{
    return py::module_::import("os").attr("fsdecode")(path).cast<std::string>();
}

}  // namespace

double propertyValue(const Parameter& p, const py::handle& value, const std::string& what)
{
    if (p.isList() && py::isinstance<py::str>(value))
        return parseParameterValue(p, value.cast<std::string>(), what);
    if (p.isFlag() && isBool(value))
        return py::bool_(py::reinterpret_borrow<py::object>(value)) ? 1.0 : 0.0;
    if (p.isFlag() && isNumber(value)) {
        const double v = value.cast<double>();
        if (v != 0.0 && v != 1.0)
            throw UsageError(what + ": " + formatNumber(v) + " is neither on (1) nor off (0)");
        return v;
    }
    if (isNumber(value) && (!p.isList() || py::hasattr(value, "__index__")))
        return checkParameterValue(p, value.cast<double>(), what);
    const std::string wanted = p.isList()   ? "one of " + describeRange(p)
                               : p.isFlag() ? "True or False"
                                            : p.isInteger() ? "a whole number" : "a number";
    throw py::type_error(what + " takes " + wanted + ", not " + typeName(value));
}

py::object pythonValue(const Parameter& p, double value)
{
    if (p.isList())
        return py::str(formatParameterValue(p, value));
    if (p.isFlag())
        return py::bool_(value != 0.0);
    if (p.isInteger())
        return py::int_(static_cast<long long>(value));
    return py::float_(value);
}

EffectValues readValues(const std::vector<Keyword>& table, const py::kwargs& keywords)
{
    for (const auto& item : keywords)
        if (!findKeyword(table, item.first.cast<std::string>()))
            throw py::type_error("unexpected keyword argument '" + item.first.cast<std::string>() + "'");
    for (const Keyword& k : table)
        if (!k.aliasOf.empty() && keywords.contains(k.name) && keywords.contains(k.aliasOf))
            throw py::type_error(k.name + " and " + k.aliasOf + " are two names of " + k.property->longName +
                                 ": give one");
    EffectValues values;
    for (const Keyword& k : table) {
        if (!keywords.contains(k.name) || keywords[k.name.c_str()].is_none())
            continue;
        const py::object value = keywords[k.name.c_str()];
        switch (k.kind) {
        case KeywordKind::Property:
            values.properties.emplace_back(k.property, propertyValue(*k.property, value, k.name));
            break;
        case KeywordKind::Position:
            readPosition(values, k, value);
            break;
        case KeywordKind::PixelAspect:
            values.pixelAspect = pixelAspectValue(value);
            break;
        case KeywordKind::Aperture:
            values.apertureGiven = true;
            values.aperture = ownedCopy(arrayFrame(value, "aperture"));
            break;
        case KeywordKind::Preset:
            values.presetPath = fileName(value);
            values.presetText = readTextFile(value);
            break;
        }
    }
    return values;
}

std::string readTextFile(const py::handle& path)
{
    const std::string name = fileName(path);
    FILE* file = std::fopen(name.c_str(), "rb");
    if (!file)
        raiseOSError(errno, path);
    std::string text;
    char buffer[65536];
    size_t n = 0;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, n);
    const int error = std::ferror(file) ? errno : 0;
    std::fclose(file);
    if (error)
        raiseOSError(error, path);
    return text;
}

void writeTextFile(const py::handle& path, const std::string& text)
{
    const std::string name = fileName(path);
    const size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : name.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? name : name.substr(slash + 1);
    const std::string temporary = folder + "." + base + ".partial-" + std::to_string(getpid());
    FILE* file = std::fopen(temporary.c_str(), "wb");
    if (!file)
        raiseOSError(errno, path);
    int error = std::fwrite(text.data(), 1, text.size(), file) == text.size() ? 0 : errno;
    if (std::fclose(file) != 0 && !error)
        error = errno;
    if (!error && std::rename(temporary.c_str(), name.c_str()) != 0)
        error = errno;
    if (error) {
        std::remove(temporary.c_str());
        raiseOSError(error, path);
    }
}
