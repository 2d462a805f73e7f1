// The texture side the scene needs: lightmap atlas maps requested by name, loaded in the
// background, and resolved when done.
#pragma once

#include <string>

namespace Kestrin::Renderer
{

class CTexture
{
public:
    CTexture(const CTexture&) = delete;
    CTexture& operator=(const CTexture&) = delete;

    // True while the background loader still works on it.
    virtual bool IsLoading() const = 0;
    // True when the image arrived and the device texture exists.
    virtual bool IsLoaded() const = 0;

protected:
    CTexture() = default;
    virtual ~CTexture() = default;
};

class CTextureManager
{
public:
    virtual ~CTextureManager() = default;
    CTextureManager(const CTextureManager&) = delete;
    CTextureManager& operator=(const CTextureManager&) = delete;

    // The texture of a data path, with one reference for the caller; loading may go on in
    // the background when bAsync. Null for an empty name.
    virtual CTexture* Load(const std::string& strName, bool bAsync) = 0;
    // Gives back one reference; null does nothing.
    virtual void Release(CTexture* pTexture) = 0;

protected:
    CTextureManager() = default;
};

} // namespace Kestrin::Renderer
