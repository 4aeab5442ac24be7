// What the keywords are, for people: the entries of `lumenveil.parameters()`
// and the docstrings of `defocus` and `Effect`, made from the keyword table
// (and so from the module's property map), NumPy style.
#pragma once

#include <string>
#include <vector>

#include <pybind11/pybind11.h>

#include "python/keyword_table.h"

// {name: {"default", "minimum", "maximum", "choices", "animated",
// "property", "description"}} for every keyword, in table order.
pybind11::dict describeKeywords(const std::vector<Keyword>& table);

// "shape='circle', match_radii=True, radius_x=0.03, ...": the keywords with
// their defaults, as a signature lists them.
std::string keywordSignature(const std::vector<Keyword>& table);

// The "Parameters" entries of the keywords: a line of type, range and
// default, and an indented line of what each is.
std::string keywordEntries(const std::vector<Keyword>& table);
