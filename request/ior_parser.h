#pragma once

#include <tao/CDR.h>
#include <tao/ORB.h>

#include <string>

#include "platform/export.h"

namespace NS_CORBA {

/// Tells on which host and port an object lives, from the stringified form of its reference alone: the object
/// is not contacted.
///
/// Understood are "IOR:" (the profiles of a reference in hexadecimal CDR), "IIOP:" and ":IR" (textual forms).
/// Parsing raises nothing: whatever the text holds, the object is valid or not afterwards. Reusable. One
/// thread at a time.
class QV_API IOR_Parser {
  public:
    IOR_Parser();
    ~IOR_Parser();

    /// The host of `object`, with ":" and the port where there is one and the configuration asks for it.
    /// False, with `hostInfo` as it was, when it can't be told. A CORBA::Exception of the ORB is logged and
    /// becomes false.
    bool GetHostInfo(CORBA::Object* object, std::string& hostInfo);

    /// Host, ":" and port of the last parse, whether it was valid or not.
    void GetIPAndPortInfo(std::string& ipAndPort);

    /// Parses `reference`; a null one is invalid.
    void DoWork(const char* reference);

    // The steps of DoWork, each for what stands behind a prefix.

    void CatIOR(const char* hexDigits);  ///< "IOR:", a reference in CDR (CORBA 3.0, 13.6.10)
    void CatIIOP(const char* text);      ///< "IIOP:"; takes the host only: the port comes out 0
    void CatPOOP(const char* text);      ///< ":IR"; as CatIIOP

    /// Decode one profile's body (CORBA 3.0, 15.7.2), whose length comes next in `stream`.
    /// @{
    void Cat_IIOP_Profile(TAO_InputCDR& stream);
    void Cat_SHMIOP_Profile(TAO_InputCDR& stream);
    void Cat_UIOP_Profile(TAO_InputCDR& stream);
    void Cat_Profile_Helper(TAO_InputCDR& stream);
    /// @}
    /// Skips a sequence of octets. Always true.
    bool Cat_Octet_Seq(TAO_InputCDR& stream);

  private:
    void ReadProfiles(TAO_InputCDR& stream);
    void ReadProfile(CORBA::ULong tag, TAO_InputCDR& stream);
    bool ReadBody(TAO_InputCDR& stream, CORBA::UShort* port);

    std::string m_host;
    CORBA::UShort m_port = 0;
    bool m_valid = true;
    std::string m_ior;
};

}  // namespace NS_CORBA
