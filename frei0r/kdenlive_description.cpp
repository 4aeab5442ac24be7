// lumenveil-kdenlive-xml: writes the effect description an editor that lists
// frei0r filters by XML reads, made from the filter's own parameter list:
//
//   lumenveil-kdenlive-xml OUTPUT.xml
//
// Each frei0r parameter is one <parameter> named as the filter names it, in
// the filter's units (mapped ranges from 0 to 1, as their comments say).
extern "C" {
#include <frei0r.h>
}

#include <cstdio>
#include <fstream>
#include <string>

#include "frei0r/filter_module.h"

namespace {

std::string escaped(const std::string& text)
{
    std::string out;
    for (char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else
            out += c;
    }
    return out;
}

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

// The list's entries as "a;b;c".
std::string entries(const Parameter& p, char separator)
{
    std::string list;
    for (size_t i = 0; i < p.listEntries.size(); ++i)
        list += (i ? std::string(1, separator) : "") + formatParameterValue(p, static_cast<double>(i));
    return list;
}

// The <parameter> element of one filter parameter.
std::string element(const FilterParameter& p)
{
    std::string kind, extra, value;
    switch (p.type) {
    case F0R_PARAM_BOOL:
        kind = "bool";
        value = p.defaultValue != 0.0 ? "1" : "0";
        break;
    case F0R_PARAM_STRING:
        kind = p.property ? "list" : "url";
        value = p.defaultText;
        if (p.property)
            extra = " paramlist=\"" + escaped(entries(*p.property, ';')) + "\"";
        break;
    case F0R_PARAM_POSITION:
        kind = "position";
        value = number(p.defaultValue) + " " + number(p.defaultY);
        extra = " min=\"" + number(p.minimum) + "\" max=\"" + number(p.maximum) + "\"";
        break;
    default:
        kind = "constant";
        value = number(p.mapped ? frei0rValueOf(p, p.defaultValue) : p.defaultValue);
        extra = p.mapped ? " min=\"0\" max=\"1\"" : " min=\"" + number(p.minimum) + "\" max=\"" + number(p.maximum) + "\"";
        extra += " decimals=\"4\"";
    }
    const std::string title = p.explanation.substr(0, p.explanation.find(':'));
    return "  <parameter type=\"" + kind + "\" name=\"" + escaped(p.name) + "\" default=\"" + escaped(value) + "\"" +
           extra + ">\n    <name>" + escaped(title) + "</name>\n    <comment>" + escaped(p.explanation) +
           "</comment>\n  </parameter>\n";
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: lumenveil-kdenlive-xml OUTPUT.xml\n");
        return 2;
    }
    const FilterModule& filter = FilterModule::Get();
    if (!filter.Module()) {
        std::fprintf(stderr, "lumenveil-kdenlive-xml: %s\n", filter.Problem().c_str());
        return 1;
    }
    std::string xml = "<?xml version=\"1.0\"?>\n<!DOCTYPE kpartgui>\n"
                      "<effect tag=\"frei0r.lumenveil\" id=\"frei0r.lumenveil\">\n"
                      "  <name>Lumenveil</name>\n"
                      "  <description>Lens defocus: the frame blurred as an out-of-focus lens blurs it, through a "
                      "circular, elliptic, polygonal or pictured aperture, highlights blooming into its "
                      "shape</description>\n"
                      "  <author>Lumenveil</author>\n";
    for (const FilterParameter& p : filter.Parameters())
        xml += element(p);
    xml += "</effect>\n";
    std::ofstream out(argv[1]);
    if (!(out << xml) || !out.flush()) {
        std::fprintf(stderr, "lumenveil-kdenlive-xml: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
