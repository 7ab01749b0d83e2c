#include <tracery/embedded/ClassListing.h>

#include <algorithm>
#include <iterator>
#include <utility>

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

/// "[name type] = method(type, [type])"
std::string callOf(const std::string& name, const SignatureListing& signature)
{
    const std::string outputs = joined(signature.outputs, [](const OutputListing& o) { return o.name + ' ' + o.type; });
    std::string inputs;
    for (std::size_t i = 0; i < signature.inputs.size(); ++i) {
        const bool optional = i + signature.optional >= signature.inputs.size();
        inputs += (i == 0 ? "" : ", ") + (optional ? '[' + signature.inputs[i] + ']' : signature.inputs[i]);
    }
    return (outputs.empty() ? "" : '[' + outputs + "] = ") + name + '(' + inputs + ')';
}

/// A call for each signature, "method(...)" when the types are not known.
std::vector<std::string> callsOf(const MethodListing& method)
{
    std::vector<std::string> calls;
    for (const SignatureListing& signature : method.signatures)
        calls.push_back(callOf(method.name, signature));
    return calls.empty() ? std::vector{method.name + "(...)"} : calls;
}

std::vector<Row> rowsOf(const MethodListing& method)
{
    std::string kind = accessName(method.access);
    if (method.isStatic)
        kind += " static";
    if (method.isAbstract)
        kind += " abstract";
    if (method.isOptional)
        kind += " optional";
    std::vector<Row> rows;
    for (std::string& call : callsOf(method))
        rows.push_back({kind, std::move(call), rows.empty() ? method.description : ""});
    return rows;
}

std::vector<Row> rowsOf(const PropertyListing& property)
{
    std::string type = property.type;
    if (!property.enumeration.empty())
        type += " {" +
                joined(property.enumeration, [](const auto& e) { return std::to_string(e.first) + ' ' + e.second; }) +
                '}';
    const std::string label = property.label != property.name ? '"' + property.label + '"' : "";
    return {
        {property.name, type, accessOf(property), std::to_string(property.attributes), label, property.description}};
}

template <class Item>
std::vector<Row> rowsOf(const std::vector<Item>& items)
{
    std::vector<Row> rows;
    for (const Item& item : items)
        for (Row& row : rowsOf(item))
            rows.push_back(std::move(row));
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
    if (listing.constructor) {
        text += "  constructor\n";
        for (const std::string& call : callsOf(*listing.constructor))
            text += "    " + call + '\n';
    }
    text += table("properties", rowsOf(listing.properties));
    text += table("methods", rowsOf(listing.methods));
    if (!listing.inheritedMethods.empty())
        text += "  methods of the host\n    " +
                joined(listing.inheritedMethods, [](const auto& name) { return name; }) + '\n';
    return text;
}

} // namespace tracery::embedded
