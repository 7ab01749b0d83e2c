#include <tracery/embedded/ClassListing.h>

#include <algorithm>
#include <iterator>

namespace tracery::embedded {

using hostobj::Access;

namespace {

using Row = std::vector<std::string>;

constexpr const char* kAccessNames[] = {"public", "protected", "private"};

std::string accessName(Access access)
{
    const auto code = static_cast<std::size_t>(access);
    return code < std::size(kAccessNames) ? kAccessNames[code] : "access " + std::to_string(code);
}

template <class Items, class Text>
std::string joined(const Items& items, Text text)
{
    std::string all;
    for (const auto& item : items)
        all += (all.empty() ? "" : ", ") + text(item);
    return all;
}

/// Columns of equal width under a heading, without those that are empty; nothing for no rows.
std::string table(const std::string& heading, const std::vector<Row>& rows)
{
    std::vector<std::size_t> widths;
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text = rows.empty() ? "" : "  " + heading + '\n';
    for (const Row& row : rows) {
        std::string line = "   ";
        for (std::size_t i = 0; i < row.size(); ++i)
            if (widths[i] > 0)
                line += ' ' + row[i] + std::string(widths[i] - row[i].size() + 1, ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return text;
}

std::string accessOf(const PropertyListing& property)
{
    if (property.getAccess == Access::public_ && property.setAccess == Access::public_)
        return "read-write";
    if (property.getAccess == Access::public_ && property.setAccess == Access::private_)
        return "read-only";
    return "get " + accessName(property.getAccess) + ", set " + accessName(property.setAccess);
}

Row rowOf(const PropertyListing& property)
{
    std::string type = property.type;
    if (!property.enumeration.empty())
        type += " {" +
                joined(property.enumeration, [](const auto& e) { return std::to_string(e.first) + ' ' + e.second; }) +
                '}';
    const std::string label = property.label != property.name ? '"' + property.label + '"' : "";
    return {property.name, type, accessOf(property), std::to_string(property.attributes), label, property.description};
}

/// "[name type] = method(type, [type])", or "method(...)" when the types are not known.
std::string callOf(const MethodListing& method)
{
    if (!method.hasSignature)
        return method.name + "(...)";
    const std::string outputs = joined(method.outputs, [](const OutputListing& o) { return o.name + ' ' + o.type; });
    std::string inputs;
    for (std::size_t i = 0; i < method.inputs.size(); ++i) {
        const bool optional = i + method.optional >= method.inputs.size();
        inputs += (i == 0 ? "" : ", ") + (optional ? '[' + method.inputs[i] + ']' : method.inputs[i]);
    }
    return (outputs.empty() ? "" : '[' + outputs + "] = ") + method.name + '(' + inputs + ')';
}

Row rowOf(const MethodListing& method)
{
    std::string kind = accessName(method.access);
    if (method.isStatic)
        kind += " static";
    if (method.isAbstract)
        kind += " abstract";
    return {kind, callOf(method)};
}

template <class Items>
std::vector<Row> rowsOf(const Items& items)
{
    std::vector<Row> rows;
    for (const auto& item : items)
        rows.push_back(rowOf(item));
    return rows;
}

} // namespace

std::string formatClass(const ClassListing& listing)
{
    std::string text = listing.name + (listing.superclass.empty() ? "" : " < " + listing.superclass);
    if (listing.isAbstract)
        text += ", abstract";
    if (listing.isHidden)
        text += ", hidden";
    text += '\n';
    if (listing.constructor)
        text += "  constructor\n    " + callOf(*listing.constructor) + '\n';
    text += table("properties", rowsOf(listing.properties));
    text += table("methods", rowsOf(listing.methods));
    if (!listing.inheritedMethods.empty())
        text += "  methods of the host\n    " +
                joined(listing.inheritedMethods, [](const auto& name) { return name; }) + '\n';
    return text;
}

} // namespace tracery::embedded
