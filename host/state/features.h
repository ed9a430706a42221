// Switch features and flow offload, which the switches' host properties steer.
#pragma once

namespace host {

struct Host;

struct Features {};

// Of the built-in host, whose switches stand already.
Features default_features(const Host& host);

}  // namespace host
