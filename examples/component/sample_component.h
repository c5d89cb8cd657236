/* sample_component.h - the example component's identifiers, its one interface, and the counters it
 * exports so that callers can watch what the library does with it.
 *
 * The library libqzsample_component.so serves one class, QZ_CLSID_SAMPLE_ADDER, whose objects offer
 * IQZSampleAdder. Any other class identifier makes its entry point fail.
 */
#ifndef QZCORE_SAMPLE_COMPONENT_H
#define QZCORE_SAMPLE_COMPONENT_H

#include "qzcore/qzcom.h"

QZ_EXTERN_C_BEGIN

/* {6F1D2C3B-8A47-4E59-B3C2-5D0E9A7F1B24} */
#define QZ_CLSID_SAMPLE_ADDER_INIT {0x6F1D2C3B, 0x8A47, 0x4E59, {0xB3, 0xC2, 0x5D, 0x0E, 0x9A, 0x7F, 0x1B, 0x24}}
#define QZ_CLSID_SAMPLE_ADDER_TEXT "{6F1D2C3B-8A47-4E59-B3C2-5D0E9A7F1B24}"
/* {0C9E4B7A-2F61-4D83-A5E0-7B3C1D9F2E68} */
#define QZ_IID_SAMPLE_ADDER_INIT {0x0C9E4B7A, 0x2F61, 0x4D83, {0xA5, 0xE0, 0x7B, 0x3C, 0x1D, 0x9F, 0x2E, 0x68}}
#define QZ_SAMPLE_PROGID "QZCore.SampleAdder.1"

typedef struct IQZSampleAdder IQZSampleAdder;
typedef struct IQZSampleAdderVtbl {
  QZRESULT (*QueryInterface)(IQZSampleAdder* self, const QZGUID* iid, void** object);
  uint32_t (*AddRef)(IQZSampleAdder* self);
  uint32_t (*Release)(IQZSampleAdder* self);
  int32_t (*Add)(IQZSampleAdder* self, int32_t a, int32_t b);
} IQZSampleAdderVtbl;
struct IQZSampleAdder {
  const IQZSampleAdderVtbl* lpVtbl;
};

/* How often DllGetClassObject has run since the library was loaded. */
typedef int32_t (*QZSampleCounterFn)(void);
#define QZ_SAMPLE_ENTRY_CALLS "QZSampleEntryCalls"
/* Objects made and not yet released. */
#define QZ_SAMPLE_LIVE_OBJECTS "QZSampleLiveObjects"
/* References held on the class object. */
#define QZ_SAMPLE_FACTORY_REFS "QZSampleFactoryRefs"

QZ_EXTERN_C_END

#endif /* QZCORE_SAMPLE_COMPONENT_H */
