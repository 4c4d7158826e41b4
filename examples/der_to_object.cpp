// Describes a structure with a template, builds DER of it, and reads it back into a typed object.

#include "asn1/asn1.h"

#include <cstdio>

namespace {

/// A point on a map: the name of a place, and its coordinates in millionths of a degree.
class Place : public CCryptoASN1Object {
public:
    Place() : CCryptoASN1Object("SEQUENCE{UTF8String{name},INTEGER{latitude},INTEGER{longitude}}") {}

    bool BuildNode() override
    {
        return builder().fill("name", element(name.view())) && builder().fill("latitude", element(latitude)) &&
               builder().fill("longitude", element(longitude));
    }

    bool ParseNode() override
    {
        name = findText("name");
        latitude = findNumber("latitude");
        longitude = findNumber("longitude");
        return !name.isEmpty();
    }

    CCryptoString name;
    std::uint32_t latitude = 0;
    std::uint32_t longitude = 0;
};

} // namespace

int main()
{
    Place helsinki;
    helsinki.name = CCryptoString("Helsinki");
    helsinki.latitude = 60169856;
    helsinki.longitude = 24938379;
    const element der = helsinki.BuildDer();

    Place read;
    if (!read.ParseDer(der)) {
        std::fputs("the bytes are not a place\n", stderr);
        return 1;
    }
    std::printf("%u octets of DER: %s at %u, %u\n", der.length(), read.name.c_str(), read.latitude, read.longitude);
    return 0;
}
