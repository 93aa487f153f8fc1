"""omniidl back-end that writes the operation tables of one IDL file.

For each interface of the file: the names, modes and TypeCodes of the parameters, the result and the exceptions of
every operation and attribute, inherited ones included, registered by repository id. The ORB seam reads them to offer
a request's arguments to interceptors.

Used as: omniidl -p DIR -bqv_tables IDLFILE  (writes NAME_tables.cpp into the -C folder)
"""
import os
import re

from omniidl import idlast, idltype, idlvisitor
from omniidl_be.cxx import id as cxxid

BASIC = {
    idltype.tk_void: "void", idltype.tk_short: "short", idltype.tk_long: "long", idltype.tk_ushort: "ushort",
    idltype.tk_ulong: "ulong", idltype.tk_float: "float", idltype.tk_double: "double",
    idltype.tk_boolean: "boolean", idltype.tk_char: "char", idltype.tk_octet: "octet", idltype.tk_any: "any",
    idltype.tk_TypeCode: "TypeCode", idltype.tk_longlong: "longlong", idltype.tk_ulonglong: "ulonglong",
    idltype.tk_wchar: "wchar",
}
MODES = {0: "CORBA::PARAM_IN", 1: "CORBA::PARAM_OUT", 2: "CORBA::PARAM_INOUT"}


def typecode(type_):
    """The C++ expression that yields the TypeCode of an IDL type, as a CORBA::TypeCode_ptr that nobody owns."""
    kind = type_.kind()
    if isinstance(type_, idltype.Declared):
        if type_.scopedName()[-1] == "Object" and type_.scopedName()[0] == "CORBA":
            return "::CORBA::_tc_Object"
        return constant(type_.scopedName())
    if isinstance(type_, (idltype.String, idltype.WString)):
        name = "string" if isinstance(type_, idltype.String) else "wstring"
        if type_.bound() == 0:
            return "::CORBA::_tc_%s" % name
        return "qv_orb::Bounded%s(%d)" % (name.capitalize(), type_.bound())
    if isinstance(type_, idltype.Fixed):
        return None
    return "::CORBA::_tc_%s" % BASIC[kind] if kind in BASIC else None


def constant(scoped):
    return "::" + cxxid.Name(scoped).prefix("_tc_").fullyQualify().lstrip(":")


def modifier(parameter):
    return MODES[parameter.direction()]


class Operation:
    def __init__(self, name, result, parameters, exceptions):
        self.name, self.result, self.parameters, self.exceptions = name, result, parameters, exceptions

    def printable(self):
        """An operation with a type that has no TypeCode constant gets no table; its arguments are not offered."""
        return self.result is not None and all(tc is not None for _, _, tc in self.parameters)


def operations_of(interface, seen):
    interface = interface.fullDecl()
    while isinstance(interface, idlast.Declarator):  # a base named through a typedef
        interface = interface.alias().aliasType().unalias().decl().fullDecl()
    if not isinstance(interface, idlast.Interface) or interface.repoId() in seen:
        return []
    seen.add(interface.repoId())
    found = []
    for base in interface.inherits():
        found += operations_of(base, seen)
    for member in interface.callables():
        found += attribute(member) if isinstance(member, idlast.Attribute) else [operation(member)]
    return found


def operation(op):
    return Operation(op.identifier(), typecode(op.returnType()),
                     [(p.identifier(), modifier(p), typecode(p.paramType())) for p in op.parameters()],
                     [constant(e.scopedName()) for e in op.raises()])


def attribute(attr):
    type_ = typecode(attr.attrType())
    made = []
    for declarator in attr.declarators():
        name = declarator.identifier()
        made.append(Operation("_get_" + name, type_, [], []))
        if not attr.readonly():
            made.append(Operation("_set_" + name, "::CORBA::_tc_void", [("value", "CORBA::PARAM_IN", type_)], []))
    return made


class Interfaces(idlvisitor.AstVisitor):
    def __init__(self):
        self.found = []

    def visitAST(self, node):
        for declaration in node.declarations():
            if declaration.mainFile():
                declaration.accept(self)

    def visitModule(self, node):
        for definition in node.definitions():
            if definition.mainFile():
                definition.accept(self)

    def visitInterface(self, node):
        if not node.local():
            self.found.append(node)


class Lines:
    """The output file, written as a whole so that a failure leaves no half of it behind."""

    def __init__(self):
        self.lines = []

    def out(self, line):
        self.lines.append(line)

    def write(self, name):
        with open(name, "w", encoding="utf-8") as file:
            file.write("\n".join(self.lines) + "\n")


def getter(expression):
    return "[]() -> CORBA::TypeCode_ptr { return %s; }" % expression


def write_interface(out, index, interface):
    out.out("// " + "::".join(interface.scopedName()))
    operations = [op for op in operations_of(interface, set()) if op.printable()]
    for number, op in enumerate(operations):
        if op.parameters:
            out.out("const qv_orb::ParameterEntry p%d_%d[] = {" % (index, number))
            for name, mode, tc in op.parameters:
                out.out('    {"%s", %s, %s},' % (name, mode, getter(tc)))
            out.out("};")
        if op.exceptions:
            out.out("const qv_orb::TypeCodeGetter e%d_%d[] = {" % (index, number))
            for tc in op.exceptions:
                out.out("    %s," % getter(tc))
            out.out("};")
    if operations:
        out.out("const qv_orb::OperationEntry o%d[] = {" % index)
        for number, op in enumerate(operations):
            out.out('    {"%s", %s, %s, %d, %s, %d},' % (
                op.name, getter(op.result),
                "p%d_%d" % (index, number) if op.parameters else "nullptr", len(op.parameters),
                "e%d_%d" % (index, number) if op.exceptions else "nullptr", len(op.exceptions)))
        out.out("};")
    out.out('const qv_orb::InterfaceEntry i%d = {"%s", %s, %d};' % (
        index, interface.repoId(), "o%d" % index if operations else "nullptr", len(operations)))
    out.out("")


def run(tree, args):
    name = re.sub(r"\.idl$", "", os.path.basename(tree.file()))
    symbol = "qv_tables_" + re.sub(r"\W", "_", name)
    interfaces = Interfaces()
    tree.accept(interfaces)
    out = Lines()
    out.out("// Operation tables of %s.idl. Generated; changes are lost." % name)
    out.out('#include "%sC.h"' % name)
    out.out('#include "qv_orb/operation_table.h"')
    out.out("")
    out.out("namespace {")
    out.out("")
    for index, interface in enumerate(interfaces.found):
        write_interface(out, index, interface)
    out.out("}  // namespace")
    out.out("")
    out.out("extern const bool %s;" % symbol)
    out.out("const bool %s = qv_orb::RegisterInterfaces({%s});" % (
        symbol, ", ".join("&i%d" % i for i in range(len(interfaces.found)))))
    out.write(name + "_tables.cpp")
