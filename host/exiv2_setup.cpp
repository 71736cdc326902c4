#include "exiv2_setup.h"

#include <exiv2/exiv2.hpp>

namespace kelvo::host {

Exiv2Session::Exiv2Session() {
  Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
  Exiv2::XmpParser::initialize();
  Exiv2::XmpProperties::registerNs(kXmpNamespace, kXmpPrefix);
}

Exiv2Session::~Exiv2Session() {
  Exiv2::XmpProperties::unregisterNs(kXmpNamespace);
  Exiv2::XmpParser::terminate();
}

}  // namespace kelvo::host
