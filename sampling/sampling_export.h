#pragma once

// What leaves libsampling.so. The build hides everything by default
// (-fvisibility=hidden, inline members hidden too); SAMPLING_API on a class
// exports its members, and SAMPLING_LOCAL takes a member back out.
//
// The exported surface is the public members of the SAMPLING_API classes:
//  - a public member function defined in a .cc file is exported as soon as
//    it is declared (nothing to add); its symbol joins
//    tests/abi/exported_symbols.txt;
//  - every private or protected member function defined in a .cc file, and
//    every private static data member, is declared SAMPLING_LOCAL. The
//    callbacks stored in the records are reached through the records'
//    function pointers, never by name from outside the library.
// tests/abi/check_exports.sh fails on an exported member that the headers do
// not declare public.
#define SAMPLING_API __attribute__((visibility("default")))
#define SAMPLING_LOCAL __attribute__((visibility("hidden")))
