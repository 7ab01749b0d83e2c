#include "bindings/Script.h"

#include <fstream>
#include <span>
#include <sstream>

using namespace tracery;
using namespace tracery::test;

namespace {

/// The checked-in listing is what hosts rely on; tracery-scope classes prints what it would be.
TEST(ListingTest, EveryPublishedClassIsAsListed)
{
    embedded::EmbeddedHost host;
    const std::size_t ofTheHost = host.listClasses().size();
    publishClasses(host.objects());
    const std::vector<embedded::ClassListing> classes = host.listClasses();
    std::string listing;
    for (const embedded::ClassListing& published : std::span(classes).subspan(ofTheHost))
        listing += (listing.empty() ? "" : "\n") + formatClass(published);
    std::ifstream file(TRACERY_CLASS_LISTING);
    std::stringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(listing, expected.str());
}

} // namespace
