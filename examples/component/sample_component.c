/* sample_component.c - an example component library: one class whose objects add two numbers,
 * served through the entry point DllGetClassObject, written in plain C against qzcom.h.
 *
 * The class object is a static with a reference count; objects live on the C heap, since they never
 * cross to another component as memory. Counters of entry-point calls, live objects and class-object
 * references are exported for the tests, the tour and the benchmarks.
 */
#include "sample_component.h"

#include <stdatomic.h>
#include <stdlib.h>
#include <string.h>

#define SAMPLE_EXPORT __attribute__((visibility("default")))

static const QZGUID kClsidAdder = QZ_CLSID_SAMPLE_ADDER_INIT;
static const QZGUID kIidAdder = QZ_IID_SAMPLE_ADDER_INIT;
static const QZGUID kIidUnknown = QZ_IID_IQZUNKNOWN_INIT;
static const QZGUID kIidClassFactory = QZ_IID_IQZCLASSFACTORY_INIT;

static atomic_int s_entryCalls;
static atomic_int s_liveObjects;
static atomic_int s_factoryRefs;

static int SameGuid(const QZGUID* a, const QZGUID* b) { return memcmp(a, b, sizeof *a) == 0; }

/* ---- The object: IQZSampleAdder. */

typedef struct SampleAdder {
  IQZSampleAdder iface; /* first, so the interface pointer is the object's address */
  atomic_uint refs;
} SampleAdder;

static uint32_t AdderAddRef(IQZSampleAdder* self) {
  return atomic_fetch_add(&((SampleAdder*)self)->refs, 1) + 1;
}

static uint32_t AdderRelease(IQZSampleAdder* self) {
  SampleAdder* adder = (SampleAdder*)self;
  const uint32_t left = atomic_fetch_sub(&adder->refs, 1) - 1;
  if (left == 0) {
    free(adder);
    atomic_fetch_sub(&s_liveObjects, 1);
  }
  return left;
}

static QZRESULT AdderQueryInterface(IQZSampleAdder* self, const QZGUID* iid, void** object) {
  if (SameGuid(iid, &kIidUnknown) || SameGuid(iid, &kIidAdder)) {
    AdderAddRef(self);
    *object = self;
    return QZ_S_OK;
  }
  *object = NULL;
  return QZ_E_NOINTERFACE;
}

static int32_t AdderAdd(IQZSampleAdder* self, int32_t a, int32_t b) {
  (void)self;
  return a + b;
}

static const IQZSampleAdderVtbl kAdderVtbl = {AdderQueryInterface, AdderAddRef, AdderRelease, AdderAdd};

/* ---- The class object: IQZClassFactory, one static instance. */

static uint32_t FactoryAddRef(IQZClassFactory* self) {
  (void)self;
  return (uint32_t)atomic_fetch_add(&s_factoryRefs, 1) + 1;
}

static uint32_t FactoryRelease(IQZClassFactory* self) {
  (void)self;
  return (uint32_t)atomic_fetch_sub(&s_factoryRefs, 1) - 1;
}

static QZRESULT FactoryQueryInterface(IQZClassFactory* self, const QZGUID* iid, void** object) {
  if (SameGuid(iid, &kIidUnknown) || SameGuid(iid, &kIidClassFactory)) {
    FactoryAddRef(self);
    *object = self;
    return QZ_S_OK;
  }
  *object = NULL;
  return QZ_E_NOINTERFACE;
}

static QZRESULT FactoryCreateInstance(IQZClassFactory* self, IQZUnknown* outer, const QZGUID* iid,
                                      void** object) {
  (void)self;
  *object = NULL;
  if (outer != NULL) return (QZRESULT)0x80040110; /* no aggregation */
  SampleAdder* adder = (SampleAdder*)malloc(sizeof *adder);
  if (adder == NULL) return QZ_E_OUTOFMEMORY;
  adder->iface.lpVtbl = &kAdderVtbl;
  atomic_init(&adder->refs, 1);
  atomic_fetch_add(&s_liveObjects, 1);
  const QZRESULT hr = AdderQueryInterface(&adder->iface, iid, object);
  AdderRelease(&adder->iface); /* the object lives on the reference QueryInterface gave, if any */
  return hr;
}

static QZRESULT FactoryLockServer(IQZClassFactory* self, int32_t lock) {
  (void)self;
  (void)lock;
  return QZ_S_OK;
}

static const IQZClassFactoryVtbl kFactoryVtbl = {FactoryQueryInterface, FactoryAddRef, FactoryRelease,
                                                 FactoryCreateInstance, FactoryLockServer};
static IQZClassFactory s_factory = {&kFactoryVtbl};

/* ---- Exports. */

SAMPLE_EXPORT QZRESULT DllGetClassObject(const QZGUID* clsid, const QZGUID* iid, void** object) {
  atomic_fetch_add(&s_entryCalls, 1);
  *object = NULL;
  if (!SameGuid(clsid, &kClsidAdder)) return QZ_CLASS_E_CLASSNOTAVAILABLE;
  return FactoryQueryInterface(&s_factory, iid, object);
}

SAMPLE_EXPORT int32_t QZSampleEntryCalls(void) { return atomic_load(&s_entryCalls); }
SAMPLE_EXPORT int32_t QZSampleLiveObjects(void) { return atomic_load(&s_liveObjects); }
SAMPLE_EXPORT int32_t QZSampleFactoryRefs(void) { return atomic_load(&s_factoryRefs); }
