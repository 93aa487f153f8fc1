#pragma once

namespace NS_CORBA {

/// What an operation record tells of; every other value is another kind of message.
enum MessageType : unsigned char { kRequestMessage = 0, kReplyMessage = 1, kExceptionMessage = 2 };

}  // namespace NS_CORBA
