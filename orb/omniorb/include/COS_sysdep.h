// Asked for by stubs of the OMG's service IDL: their symbols live in libqv_orb, so no import attributes are needed.
#pragma once
