#pragma once

namespace NS_CORBA {

/// What stands in a record in the place of a secret.
constexpr char kSecretMask[] = "******";

}  // namespace NS_CORBA
