#pragma once

namespace support {

/// From now on OpenSSL gives this process two real key pairs in turn, each made when it is first
/// needed, so that a test does not wait for a new pair each time.
void make_keys_quickly();

} // namespace support
